// SPDX-License-Identifier: Apache-2.0
// How the recorder writes a run down and how tests read it back.
//
// A record is one line "KIND COUNT INPUT" and COUNT arguments, each as "LENGTH:BYTES" and a line feed, followed by the
// input in the same form when INPUT is 1. KIND is "shell" (one argument: the command line) or "program".
#pragma once

namespace kestrove::sandbox {

constexpr char kCommandLog[] = "/run/kestrove/commands";
constexpr char kAnswers[] = "/run/kestrove/answers";
constexpr char kRealPrograms[] = "/run/kestrove/real";
constexpr char kShellKind[] = "shell";
constexpr char kProgramKind[] = "program";

}  // namespace kestrove::sandbox
