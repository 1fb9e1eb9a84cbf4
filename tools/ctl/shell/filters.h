// SPDX-License-Identifier: Apache-2.0
// What stands behind a bar: each filter takes the lines of the one in front of it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/ctl/shell/candidates.h"
#include "tools/ctl/shell/typed_line.h"

namespace ctl {

using LineSink = std::function<void(const std::string& line)>;

class Filters {
 public:
  // Throws kUsage for what is no filter: "match RE", "count", "json" and "last N" are. Words may be cut.
  Filters(const std::vector<Words>& filters, LineSink sink);
  ~Filters();
  Filters(const Filters&) = delete;
  Filters& operator=(const Filters&) = delete;

  bool none() const { return stages_.empty(); }
  bool wantsJson() const { return json_; }

  void take(const std::string& text);  // any piece of output
  void end();

  class Stage {
   public:
    virtual ~Stage() = default;
    virtual void line(const std::string& line, const LineSink& next) = 0;
    virtual void end(const LineSink&) {}
  };

 private:
  void add(const Words& filter);
  void pass(size_t stage, const std::string& line);
  LineSink behind(size_t stage);

  std::vector<std::unique_ptr<Stage>> stages_;
  LineSink sink_;
  std::string begun_;  // a line without its end
  bool json_ = false;
};

// The names of filters that begin so, with their help.
std::vector<Candidate> filterCandidates(const std::string& begun);

}  // namespace ctl
