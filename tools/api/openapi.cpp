// SPDX-License-Identifier: Apache-2.0
#include "tools/api/openapi.h"

#include <algorithm>
#include <map>

#include "tools/api/endpoint.h"
#include "tools/api/router.h"
#include "tools/ctl/place.h"
#include "tools/ctl/shape.h"

namespace api {
namespace {

constexpr char kBegin[] =
    R"(# SPDX-License-Identifier: Apache-2.0
# Printed by kestrove-api-reference from the program's table of requests.
openapi: 3.0.3
info:
  title: kestrove-api
  description: The store of the appliance over HTTP. Results and errors are those of kestrovectl --json.
  version: "1"
servers:
  - url: /api/1
security:
  - cookie: []
  - token: []
paths:
)";

constexpr char kComponents[] =
    R"(components:
  securitySchemes:
    cookie: {type: apiKey, in: cookie, name: __Host-kestrove}
    token: {type: http, scheme: bearer}
)";

struct Answer {
  int status;
  const char* when;
};

constexpr Answer kAnswers[] = {{400, "the request makes no sense"},
                               {401, "nobody is logged in"},
                               {403, "not permitted"},
                               {404, "there is no such thing"},
                               {409, "another change waits for its confirmation"},
                               {412, "the table is not what If-Match says"},
                               {413, "the body is too long"},
                               {422, "refused by the library, with its code"},
                               {503, "no store, or locked for longer than two seconds; the holder is named"}};

std::string quoted(const std::string& text) { return ctl::Json(text).dump(); }

std::string schemaOf(const ctl::Shape& shape);

std::string membersOf(const ctl::Shape& shape) {
  std::string properties, needed;
  for (const ctl::Member& member : shape.members) {
    if (member.name == "*") return "{type: object, additionalProperties: " + schemaOf(member.shape) + "}";
    if (member.name.starts_with("@")) continue;
    properties += (properties.empty() ? "" : ", ") + quoted(member.name) + ": " + schemaOf(member.shape);
    if (!member.optional) needed += (needed.empty() ? "" : ", ") + quoted(member.name);
  }
  return "{type: object" + (needed.empty() ? "" : ", required: [" + needed + "]") + ", properties: {" + properties +
         "}}";
}

std::string choiceOf(const ctl::Shape& shape) {
  std::string parts;
  for (const ctl::Shape& part : shape.parts) parts += (parts.empty() ? "" : ", ") + schemaOf(part);
  return "{oneOf: [" + parts + "]}";
}

std::string schemaOf(const ctl::Shape& shape) {
  using Kind = ctl::Shape::Kind;
  switch (shape.kind) {
    case Kind::kText: return "{type: string}";
    case Kind::kNumber: return "{type: number}";
    case Kind::kBool: return "{type: boolean}";
    case Kind::kNull: return "{nullable: true}";
    case Kind::kAny: return "{}";
    case Kind::kTime: return "{type: string, format: date-time, nullable: true}";
    case Kind::kWord: return "{type: string, enum: [" + quoted(shape.word) + "]}";
    case Kind::kList: return "{type: array, items: " + schemaOf(shape.parts[0]) + "}";
    case Kind::kObject: return membersOf(shape);
    case Kind::kChoice: return choiceOf(shape);
    case Kind::kNamed: return "{$ref: \"#/components/schemas/" + shape.word + "\"}";
    case Kind::kChange:
    case Kind::kLines: return schemaOf(shape.parts[0]);
  }
  return "{}";
}

const char* mediaOf(const Endpoint& row) {
  const std::string special = row.special;
  if (special == "stream") return "text/event-stream";
  if (special == "metrics") return "text/plain";
  return special == "file" ? "application/gzip" : "application/json";
}

// Of the command that the row stands for.
std::string resultOf(const Endpoint& row) {
  std::vector<std::string> words;
  for (const std::string& word : ctl::wordsOf(row.words)) {
    if (word.starts_with("{") || word.starts_with("-")) break;
    words.push_back(word);
  }
  const ctl::Command* command = words.empty() ? nullptr : ctl::placeBehind(ctl::grammar(), words).row;
  if (!command || !*ctl::shapeOf(*command)) return "{}";
  const ctl::Shape shape = ctl::parseShape(ctl::shapeOf(*command));
  return *row.pick && shape.kind == ctl::Shape::Kind::kList ? schemaOf(shape.parts[0]) : schemaOf(shape);
}

std::string parametersOf(const Endpoint& row) {
  std::string text;
  for (const std::string& name : placesIn(row.path)) {
    text += "        - {name: " + name + ", in: path, required: true, schema: {type: string}}\n";
  }
  const bool query = row.reads() || std::string(row.method) == "DELETE";
  for (const Field& field : row.fields) {
    if (!query) break;
    text += "        - {name: " + quoted(field.name) + ", in: query, required: " + (field.needed ? "true" : "false") +
            ", schema: {type: " + field.type + "}, description: " + quoted(field.help) + "}\n";
  }
  if (row.right == Right::kChange && !row.reads()) {
    text +=
        "        - {name: comment, in: query, schema: {type: string}, description: \"A text for the revision\"}\n"
        "        - {name: confirm, in: query, schema: {type: number}, description: \"Minutes after which the change is "
        "taken back unless it is confirmed\"}\n";
  }
  return text.empty() ? "" : "      parameters:\n" + text;
}

std::string typeOf(const Field& field) {
  const std::string type = field.type;
  if (type == "any") return "{description: " + quoted(field.help) + "}";
  const std::string items = type == "array" ? ", items: {type: object}" : "";
  return "{type: " + type + items + ", description: " + quoted(field.help) + "}";
}

std::string bodyOf(const Endpoint& row) {
  if (row.fields.empty() || row.reads() || std::string(row.method) == "DELETE") return {};
  std::string needed, properties;
  for (const Field& field : row.fields) {
    if (field.needed) needed += (needed.empty() ? "" : ", ") + quoted(field.name);
    properties += "                " + quoted(field.name) + ": " + typeOf(field) + "\n";
  }
  return "      requestBody:\n        content:\n          application/json:\n            schema:\n              type: "
         "object\n" +
         (needed.empty() ? "" : "              required: [" + needed + "]\n") + "              properties:\n" +
         properties;
}

std::string responseOf(const Answer& answer) {
  return "    \"" + std::to_string(answer.status) + "\": {description: " + quoted(answer.when) +
         ", content: {application/json: {schema: {$ref: \"#/components/schemas/error\"}}}}\n";
}

std::string operationOf(const Endpoint& row) {
  std::string method = row.method;
  std::ranges::transform(method, method.begin(), [](char c) { return static_cast<char>(c + 32); });
  std::string text = "    " + method + ":\n      summary: " + quoted(row.help) + "\n";
  if (row.right == Right::kNone) text += "      security: []\n";
  text += parametersOf(row) + bodyOf(row) + "      responses:\n";
  text += "        \"" + std::to_string(row.done) + "\": {description: done, content: {" + mediaOf(row) +
          ": {schema: " + resultOf(row) + "}}}\n";
  for (const Answer& answer : kAnswers) {
    const std::string status = std::to_string(answer.status);
    text += "        \"" + status + "\": {$ref: \"#/components/responses/" + status + "\"}\n";
  }
  return text;
}

}  // namespace

std::string openApiText() {
  std::map<std::string, std::string> paths;
  for (const Endpoint& row : endpoints()) paths[*row.path ? row.path : "/"] += operationOf(row);
  std::string text = kBegin;
  for (const auto& [path, operations] : paths) text += "  " + path + ":\n" + operations;
  text += std::string(kComponents) + "  responses:\n";
  for (const Answer& answer : kAnswers) text += responseOf(answer);
  text += "  schemas:\n";
  for (const ctl::NamedShape& shape : ctl::namedShapes()) {
    text += std::string("    ") + shape.name + ": " + schemaOf(ctl::parseShape(shape.shape)) + "\n";
  }
  return text;
}

}  // namespace api
