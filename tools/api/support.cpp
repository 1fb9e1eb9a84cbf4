// SPDX-License-Identifier: Apache-2.0
#include "tools/api/support.h"

#include "tools/api/digest.h"
#include "tools/api/folder.h"

namespace api {
namespace {

constexpr char kFolder[] = "/run/kestrove/support";

}  // namespace

Reply support(const Request& request, const Route& route, const Caller& caller) {
  const Folder folder(kFolder);
  for (const std::string& name : folder.names()) {
    if (folder.age(name) > 60) folder.remove(name);
  }
  const std::string file = std::string(kFolder) + "/" + randomName() + ".tar.gz";
  Route named = route;
  named.parts["file"] = file;
  Reply reply = carryOut(request, named, caller);
  if (reply.status != 200) return reply;
  return {.status = 200,
          .body = {},
          .headers = {{"Content-Type", "application/gzip"},
                      {"Content-Disposition", "attachment; filename=\"support.tar.gz\""}},
          .file = file};
}

}  // namespace api
