// SPDX-License-Identifier: Apache-2.0
// Random names that nobody guesses, and what may be kept of them.
#pragma once

#include <string>

namespace api {

// 64 hexadecimal digits of the kernel's random numbers. Throws a Refusal where there are none.
std::string randomName();

// SHA-256, in hexadecimal digits.
std::string digest(const std::string& text);

// Takes as long whatever differs.
bool sameSecret(const std::string& one, const std::string& other);

}  // namespace api
