// SPDX-License-Identifier: Apache-2.0
// A process that does nothing.
int main(void) { return 0; }
