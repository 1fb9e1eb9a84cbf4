// SPDX-License-Identifier: Apache-2.0
// The program of the sandbox: options in, an appliance out.
#include "sandbox/launch.h"

int main(int argc, char** argv) { return kestrove::sandbox::launch(kestrove::sandbox::readOptions(argc, argv)); }
