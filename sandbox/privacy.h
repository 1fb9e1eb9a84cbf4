// SPDX-License-Identifier: Apache-2.0
// A view of the machine's mounts that nobody else shares.
#pragma once

namespace kestrove::sandbox {

// Takes this process's mount namespace, which must be new, apart from the machine's. In a plain chroot, whose root is
// a mere folder and neither can be taken apart nor left, the folder becomes the namespace's root.
void takeMountsApart();

}  // namespace kestrove::sandbox
