// SPDX-License-Identifier: Apache-2.0
#include "tools/api/openapi.h"

#include <algorithm>
#include <map>

#include "tools/api/message.h"
#include "tools/api/router.h"
#include "tools/ctl/place.h"

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
    csrf: {type: apiKey, in: header, name: X-CSRF-Token}
    token: {type: http, scheme: bearer}
)";

// What a browser sends beside its cookie with whatever is no look.
constexpr char kBothSecrets[] = "      security:\n        - {cookie: [], csrf: []}\n        - {token: []}\n";

// Beside the shapes of the commands.
constexpr char kSchemas[] =
    R"(  schemas:
    changed: {type: object, properties: {"changed": {type: boolean, description: "false where the value was there already"}}}
)";

constexpr char kChangeParameters[] =
    R"(        - {name: comment, in: query, schema: {type: string}, description: "A text for the revision"}
        - {name: confirm, in: query, schema: {type: number}, description: "Minutes after which the change is taken back unless it is confirmed"}
)";
constexpr char kIfMatch[] =
    R"(        - {name: If-Match, in: header, schema: {type: string}, description: "ETag of the table: otherwise nothing is changed"}
)";
constexpr char kIfNoneMatch[] =
    R"(        - {name: If-None-Match, in: header, schema: {type: string}, description: "ETag of what is known already"}
)";

bool changes(const Endpoint& row) { return row.right == Right::kChange && !row.reads(); }
bool isTable(const Endpoint& row) { return *row.table != '\0'; }
bool hasBody(const Endpoint& row) { return !row.fields.empty() && !row.reads() && std::string(row.method) != "DELETE"; }

bool always(const Endpoint&) { return true; }
bool isLogIn(const Endpoint& row) { return std::string(row.special) == "log-in"; }
bool needsSomebody(const Endpoint& row) { return row.right != Right::kNone || isLogIn(row); }
bool namesSomething(const Endpoint& row) { return !placesIn(row.path).empty() || std::string(row.special) == "batch"; }
bool changesTable(const Endpoint& row) { return changes(row) && isTable(row); }
bool readsTable(const Endpoint& row) { return row.reads() && isTable(row); }
bool inPart(const Endpoint& row) {
  return std::string(row.special) == "batch" || std::string(row.words).starts_with("apply");
}

// Beside its success.
struct Answer {
  int status;
  const char* when;
  bool (*of)(const Endpoint& row);
};

constexpr Answer kAnswers[] = {{207, "carried out in part; it says which", inPart},
                               {304, "the table is what If-None-Match says", readsTable},
                               {400, "the request makes no sense", always},
                               {401, "nobody is logged in", needsSomebody},
                               {403, "not permitted", always},
                               {404, "there is no such thing", namesSomething},
                               {409, "another change waits for its confirmation", changes},
                               {412, "the table is not what If-Match says", changesTable},
                               {413, "the body is too long", hasBody},
                               {415, "the body is no JSON", hasBody},
                               {421, "the appliance has another name", always},
                               {422, "refused by the library, with its code", changes},
                               {429, "too soon behind a log-in that failed; Retry-After says when", isLogIn},
                               {500, "a file or a program failed", always},
                               {503, "no store, or locked for longer than two seconds; the holder is named", always}};

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

// Whose result the row's is.
const ctl::Command* commandOf(const Endpoint& row) {
  std::vector<std::string> words;
  for (const std::string& word : ctl::wordsOf(*row.words ? row.words : row.special)) {
    if (word.starts_with("{") || word.starts_with("-")) break;
    words.push_back(word);
  }
  return words.empty() ? nullptr : ctl::placeBehind(ctl::grammar(), words).row;
}

// An object that a change gives says besides whether anything was changed.
std::string resultOf(const Endpoint& row) {
  if (mediaOf(row) != std::string(kJsonType)) return "{type: string}";
  const std::optional<ctl::Shape> shape = resultShape(row);
  std::string schema = shape ? schemaOf(*shape) : "{}";
  const bool list = shape && shape->kind == ctl::Shape::Kind::kList;
  if (!changes(row) || *row.special || list) return schema;
  return "{allOf: [" + schema + ", {$ref: \"#/components/schemas/change\"}, {$ref: \"#/components/schemas/changed\"}]}";
}

std::string parametersOf(const Endpoint& row) {
  std::string text;
  for (const std::string& name : placesIn(row.path)) {
    text += "        - {name: " + name + ", in: path, required: true, schema: {type: string}}\n";
  }
  for (const Field& field : row.fields) {
    if (hasBody(row)) break;
    text += "        - {name: " + quoted(field.name) + ", in: query, required: " + (field.needed ? "true" : "false") +
            ", schema: {type: " + field.type + "}, description: " + quoted(field.help) + "}\n";
  }
  if (changes(row)) text += kChangeParameters;
  if (changesTable(row)) text += kIfMatch;
  if (readsTable(row)) text += kIfNoneMatch;
  return text.empty() ? "" : "      parameters:\n" + text;
}

std::string typeOf(const Field& field) {
  const std::string type = field.type;
  if (type == "any") return "{description: " + quoted(field.help) + "}";
  const std::string items = type == "array" ? ", items: {type: object}" : "";
  return "{type: " + type + items + ", description: " + quoted(field.help) + "}";
}

std::string bodyOf(const Endpoint& row) {
  if (!hasBody(row)) return {};
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
  const std::string head = "    \"" + std::to_string(answer.status) + "\": {description: " + quoted(answer.when);
  if (answer.status == 207 || answer.status == 304) return head + "}\n";
  return head + ", content: {application/json: {schema: {$ref: \"#/components/schemas/error\"}}}}\n";
}

std::string successOf(const Endpoint& row) {
  const std::string tag = readsTable(row) ? ", headers: {ETag: {schema: {type: string}}}" : "";
  return "        \"" + std::to_string(row.done) + "\": {description: done" + tag + ", content: {" + mediaOf(row) +
         ": {schema: " + resultOf(row) + "}}}\n";
}

std::string operationOf(const Endpoint& row) {
  std::string method = row.method;
  std::ranges::transform(method, method.begin(), [](char c) { return static_cast<char>(c + 32); });
  std::string text = "    " + method + ":\n      summary: " + quoted(row.help) + "\n";
  if (row.right == Right::kNone) text += "      security: []\n";
  if (row.right != Right::kNone && !row.reads()) text += kBothSecrets;
  text += parametersOf(row) + bodyOf(row) + "      responses:\n";
  text += successOf(row);
  for (const Answer& answer : kAnswers) {
    const std::string status = std::to_string(answer.status);
    if (answer.of(row)) text += "        \"" + status + "\": {$ref: \"#/components/responses/" + status + "\"}\n";
  }
  return text;
}

}  // namespace

std::optional<ctl::Shape> resultShape(const Endpoint& row) {
  if (*row.result) return ctl::parseShape(row.result);
  const ctl::Command* command = commandOf(row);
  if (!command || !*ctl::shapeOf(*command)) return std::nullopt;
  ctl::Shape shape = ctl::parseShape(ctl::shapeOf(*command));
  const bool one = *row.pick && shape.kind == ctl::Shape::Kind::kList;
  return one ? ctl::Shape(shape.parts[0]) : shape;
}

std::string openApiText() {
  std::map<std::string, std::string> paths;
  for (const Endpoint& row : endpoints()) paths[*row.path ? row.path : "/"] += operationOf(row);
  std::string text = kBegin;
  for (const auto& [path, operations] : paths) text += "  " + path + ":\n" + operations;
  text += std::string(kComponents) + "  responses:\n";
  for (const Answer& answer : kAnswers) text += responseOf(answer);
  text += kSchemas;
  for (const ctl::NamedShape& shape : ctl::namedShapes()) {
    text += std::string("    ") + shape.name + ": " + schemaOf(ctl::parseShape(shape.shape)) + "\n";
  }
  return text;
}

}  // namespace api
