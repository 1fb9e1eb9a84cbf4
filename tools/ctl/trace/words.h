// SPDX-License-Identifier: Apache-2.0
// Numbers of the kernel's interfaces in words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ctl {

struct NumberName {
  uint64_t number;
  const char* name;
};

// "NAME", or the number itself where the table has none.
std::string nameOf(std::span<const NumberName> table, uint64_t number);

// "NAME|NAME|0x40": what the table does not name stands in hex; "0" for none.
std::string flagsText(std::span<const NumberName> table, uint64_t flags);

// An address of 4 or 16 bytes in network byte order.
std::string ipText(int family, const void* address);

// "/16", or "/255.0.255.0" for a mask with holes. Network byte order.
std::string maskText(uint32_t mask);

std::string hexText(std::span<const unsigned char> bytes);

// The kernel's answer: the number, or the name of the error that a negative one stands for.
std::string answerText(int64_t answer);

// Words as one would type them for the shell: what is not plain stands in quotes.
std::string wordsText(std::span<const std::string> words);

}  // namespace ctl
