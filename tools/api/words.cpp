// SPDX-License-Identifier: Apache-2.0
#include "tools/api/words.h"

#include <algorithm>
#include <sstream>

#include "tools/api/failure.h"

namespace api {
namespace {

constexpr int kDeepest = 16;

// Names that go with every change.
bool isShared(const std::string& name) { return name == "comment" || name == "confirm"; }

std::string textOf(const std::string& name, const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_boolean()) return value.get<bool>() ? "on" : "off";
  if (value.is_number()) return value.dump();
  throw Failure(400, name + ": a text, a number or a boolean is needed");
}

// What the command would read as an option or as a question is none of its values.
std::string wordOf(const std::string& name, const Json& value) {
  std::string text = textOf(name, value);
  const bool number = text.size() > 1 && text[0] == '-' && text.find_first_not_of("0123456789", 1) == std::string::npos;
  if ((text.starts_with("-") && !number) || text == "?") throw Failure(400, name + ": " + text + " is no value");
  return text;
}

// A state may be a file of the machine: not from here.
std::string stateOf(const std::string& name, const Json& value) {
  std::string text = wordOf(name, value);
  const bool revision =
      text.starts_with("rev:") && text.size() < 16 && text.find_first_not_of("0123456789", 4) == std::string::npos;
  if (text != "running" && text != "saved" && !revision) throw Failure(400, name + ": running, saved or rev:N");
  return text;
}

const Field* fieldOf(const Endpoint& row, const std::string& name) {
  const auto found = std::ranges::find_if(row.fields, [&](const Field& field) { return name == field.name; });
  return found == row.fields.end() ? nullptr : &*found;
}

bool truth(const Field& field, const Json& value) {
  if (value.is_boolean()) return value.get<bool>();
  if (value == "true" || value == "false") return value == "true";
  throw Failure(400, std::string(field.name) + ": true or false");
}

Json queryObject(const Request& request) {
  Json members = Json::object();
  for (const auto& [name, value] : request.query) {
    if (!isShared(name)) members[name] = value;
  }
  return members;
}

bool takesBody(const Endpoint& row) { return !row.reads() && std::string(row.method) != "DELETE"; }

Json membersOf(const Endpoint& row, const Request& request) {
  if (takesBody(row)) return bodyOf(request);
  if (!request.body.empty()) throw Failure(400, std::string(row.method) + " takes no body");
  return queryObject(request);
}

void requireKnown(const Endpoint& row, const Json& members) {
  for (const auto& [name, value] : members.items()) {
    if (!fieldOf(row, name)) throw Failure(400, name + ": no such member");
  }
  for (const Field& field : row.fields) {
    if (field.needed && !members.contains(field.name)) throw Failure(400, std::string(field.name) + " is missing");
  }
}

std::string line(const Field& field, const Json& value) {
  if (!value.is_string()) throw Failure(400, std::string(field.name) + ": a text is needed");
  const std::string text = value.get<std::string>();
  if (text.find_first_of(std::string("\n\r\0", 3)) != std::string::npos) {
    throw Failure(400, std::string(field.name) + ": control characters are refused");
  }
  return text + "\n";
}

void addField(const Field& field, const Json& value, Spoken& spoken) {
  const std::string option = field.option;
  switch (field.form) {
    case Form::kWord:
    case Form::kState: break;
    case Form::kSwitch:
    case Form::kOption:
      if (!option.empty()) spoken.words.insert(spoken.words.end(), {option, wordOf(field.name, value)});
      break;
    case Form::kFlag:
      if (truth(field, value)) spoken.words.push_back(option);
      break;
    case Form::kLine: spoken.input += line(field, value); break;
    case Form::kInput: spoken.input += textOf(field.name, value); break;
  }
}

// A value takes a whole word, or a part of one: "{address}/{length}".
std::string filled(const std::string& word, const Fields& values) {
  std::string text = word;
  for (const std::string& name : placesIn(word)) {
    const std::string mark = "{" + name + "}";
    const auto found = values.find(name);
    if (found != values.end()) text.replace(text.find(mark), mark.size(), found->second);
  }
  return text;
}

bool shallow(int depth, Json::parse_event_t, Json&) {
  if (depth > kDeepest) throw Failure(400, "the body has too many levels");
  return true;
}

}  // namespace

Json bodyOf(const Request& request) {
  if (request.body.empty()) return Json::object();
  const std::string type = request.header("content-type");
  if (type.substr(0, type.find(';')) != kJsonType) throw Failure(415, "a body is of the type application/json");
  Json body = Json::parse(request.body, shallow, false);
  if (!body.is_object()) throw Failure(400, "the body is no JSON object");
  return body;
}

std::vector<std::string> wordsFrom(const std::string& pattern, const Fields& values) {
  std::vector<std::string> words;
  std::istringstream stream(pattern);
  for (std::string word; stream >> word;) words.push_back(filled(word, values));
  return words;
}

Spoken spoken(const Route& route, const Request& request) {
  const Endpoint& row = *route.endpoint;
  const Json members = membersOf(row, request);
  requireKnown(row, members);
  Fields values;
  for (const auto& [name, value] : route.parts) values[name] = wordOf(name, value);
  for (const Field& field : row.fields) {
    if (field.form == Form::kState) values[field.name] = stateOf(field.name, members[field.name]);
    const bool atItsPlace = field.form == Form::kWord || (field.form == Form::kSwitch && !*field.option);
    if (atItsPlace && !members[field.name].is_array()) values[field.name] = wordOf(field.name, members[field.name]);
  }
  Spoken result = {wordsFrom(row.words, values), {}};
  for (const Field& field : row.fields) {
    if (members.contains(field.name)) addField(field, members[field.name], result);
  }
  return result;
}

}  // namespace api
