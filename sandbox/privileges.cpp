// SPDX-License-Identifier: Apache-2.0
#include "sandbox/privileges.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "sandbox/report.h"

namespace kestrove::sandbox {
namespace {

constexpr unsigned kDropped[] = {CAP_SYS_TIME,   CAP_SYS_MODULE, CAP_SYS_RAWIO,     CAP_SYS_BOOT, CAP_MKNOD,
                                 CAP_WAKE_ALARM, CAP_MAC_ADMIN,  CAP_BLOCK_SUSPEND, CAP_SYSLOG};

}  // namespace

void dropPrivileges() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct sets[2] = {};
  if (syscall(SYS_capget, &header, sets) == -1) giveUp("cannot read the privileges: %m");
  for (unsigned privilege : kDropped) {
    prctl(PR_CAPBSET_DROP, privilege, 0, 0, 0);
    __user_cap_data_struct& half = sets[privilege / 32];
    const __u32 others = ~(1U << (privilege % 32));
    half.effective &= others;
    half.permitted &= others;
    half.inheritable &= others;
  }
  if (syscall(SYS_capset, &header, sets) == -1) giveUp("cannot give up privileges: %m");
}

}  // namespace kestrove::sandbox
