// SPDX-License-Identifier: Apache-2.0
// One process that answers, in a single thread: work that may wait is done in processes of its own, and streams sleep.
#pragma once

#include <microhttpd.h>

#include <memory>
#include <set>

#include "tools/api/exchange.h"
#include "tools/api/news.h"
#include "tools/api/plan.h"

namespace api {

class Worker {
 public:
  Worker(int listener, Settings settings);

  // Until a signal ends it, or until this process is no longer fit to read the store. Gives the exit status.
  int serve();

  // For the library behind it.
  MHD_Result hear(MHD_Connection* connection, const char* path, const char* method, const char* data, size_t* size,
                  void** place);
  void forget(Exchange* exchange);
  void noteConnection(MHD_Connection* connection, bool begins);

 private:
  void wait();
  void takeResults();
  void look();
  void tellNews();
  void endOld();
  void takeBody(Exchange& exchange, std::string_view part) const;
  MHD_Result begin(Exchange& exchange);
  MHD_Result reply(Exchange& exchange);
  std::optional<Reply> workAtOnce(const Plan& plan);
  MHD_Result workElsewhere(Exchange& exchange, const Plan& plan);
  bool stillMay(const Exchange& exchange) const;
  size_t streams() const;
  void wake(Exchange& exchange);

  Settings settings_;
  MHD_Daemon* daemon_ = nullptr;
  int events_ = -1;  // of the library behind it
  std::set<Exchange*> exchanges_;
  std::map<MHD_Connection*, double> waiting_;  // connections whose request is not whole, since when
  News news_;
  double looked_ = 0;
  double checked_ = 0;
  bool unfit_ = false;
};

}  // namespace api
