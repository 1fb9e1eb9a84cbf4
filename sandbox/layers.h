// SPDX-License-Identifier: Apache-2.0
// The machine's files below the appliance's own.
#pragma once

namespace kestrove::sandbox {

// Mounts every folder of the machine's root in the new root, with what `upper` holds laid over it: copy-on-write where
// the kernel gives an overlay, else file by file, read-only but for what is laid over. File systems mounted deeper
// stay visible read-only.
void mountLayers(bool overlay);

}  // namespace kestrove::sandbox
