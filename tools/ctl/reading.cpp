// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/reading.h"

#include "tools/common/hold.h"
#include "tools/ctl/held_look.h"

namespace ctl {

Json gather(const Session& session, const std::function<Json()>& rows) {
  requireStore(session);
  awaitLock(session);
  tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  Json gathered = rows();
  ReadLook::call();
  return gathered;
}

void showRead(const Session& session, const std::function<Json()>& rows) { session.show(gather(session, rows)); }

}  // namespace ctl
