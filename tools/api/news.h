// SPDX-License-Identifier: Apache-2.0
// Events as they come, for all streams of a worker at once.
#pragma once

#include <memory>
#include <string>

#include "tools/ctl/session.h"
#include "tools/ctl/watch/event_follower.h"

namespace api {

class News {
 public:
  News();
  // Lines of server-sent events; empty where nothing has come, or where the store is locked just now.
  std::string look();
  // Nobody listens.
  void stop() { follower_.reset(); }
  // What comes from now on is heard.
  bool hears() const { return follower_ != nullptr; }
  // The store is another one.
  bool over() const { return over_; }

 private:
  std::string taken();

  ctl::Session session_;
  std::unique_ptr<ctl::EventFollower> follower_;
  std::string text_;
  bool over_ = false;
};

}  // namespace api
