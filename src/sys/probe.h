// SPDX-License-Identifier: Apache-2.0
// Places where a tracer may look in (USDT, provider kestrove): one nop each, and a note in the library that says where
// and what is at hand there. Nothing at all where systemtap's header is missing. doc/trace has scripts.
#pragma once

#if __has_include(<sys/sdt.h>)
#include <sys/sdt.h>
#define KESTROVE_PROBE(name) DTRACE_PROBE(kestrove, name)
#define KESTROVE_PROBE1(name, value) DTRACE_PROBE1(kestrove, name, value)
#else
#define KESTROVE_PROBE(name) static_cast<void>(0)
#define KESTROVE_PROBE1(name, value) static_cast<void>(value)
#endif
