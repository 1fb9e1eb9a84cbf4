// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/reading.h"

#include "tools/common/hold.h"

namespace ctl {

Json gather(const Session& session, const std::function<Json()>& rows) {
  requireStore(session);
  awaitLock(session);
  tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  return rows();
}

void showRead(const Session& session, const std::function<Json()>& rows) { session.show(gather(session, rows)); }

}  // namespace ctl
