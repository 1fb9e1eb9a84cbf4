// SPDX-License-Identifier: Apache-2.0
// Takes secrets out of texts that leave the appliance.
#pragma once

#include <string>
#include <vector>

namespace ctl {

inline constexpr char kRemoved[] = "(removed)";

class Scrubber {
 public:
  // From here on this text goes wherever it stands, also as JSON and listings escape it. What is shorter than four
  // characters would take half of every text along: that has to go where it is known to stand.
  void learn(const std::string& secret);

  // A file of accounts, "name:hash:...": the second fields, without the marks of an account that is locked.
  void learnAccounts(const std::string& text);
  // The agent's configuration: communities, pass phrases, keys.
  void learnAgent(const std::string& text);
  // A configuration file of the store.
  void learnConfiguration(const std::string& text);

  // Without what was learnt, and without anything that looks like the hash of a password.
  std::string clean(std::string text) const;

  // The same for files in which every secret has its place, however short it is.
  std::string cleanAccounts(const std::string& text) const;
  std::string cleanAgent(const std::string& text) const;
  std::string cleanConfiguration(const std::string& text) const;

 private:
  std::vector<std::string> secrets_;  // longer ones first
};

}  // namespace ctl
