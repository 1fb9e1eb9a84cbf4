// SPDX-License-Identifier: Apache-2.0
#include "tools/api/worker.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "kestrove/segment.h"
#include "tools/api/failure.h"
#include "tools/common/lock_wait.h"
#include "tools/common/steady_clock.h"

namespace api {
namespace {

constexpr unsigned kIdleSeconds = 15;   // without a byte
constexpr double kLongestRequest = 20;  // from the first byte to the last
constexpr unsigned kConnections = 256;
// More than 32 KiB: that much the library behind maps for each connection and gives back to the system with all that a
// request had in it; less than that would stay in the heap.
constexpr size_t kConnectionMemory = 40960;
constexpr size_t kProcesses = 32;
constexpr size_t kStreams = 16;
constexpr double kLookSeconds = 0.25;
constexpr double kCheckSeconds = 5;  // whether a stream's session is still open; a remark keeps the way there open
constexpr int kShortWaits = 8;
constexpr useconds_t kShortWait = 250;           // microseconds
constexpr char kGreeting[] = "retry: 2000\n\n";  // what comes behind it is whole
constexpr size_t kMostUnsent = 1 << 20;

volatile sig_atomic_t ended = 0;

void noteEnd(int) { ended = 1; }

MHD_Result hearRequest(void* worker, MHD_Connection* connection, const char* path, const char* method, const char*,
                       const char* data, size_t* size, void** place) {
  return static_cast<Worker*>(worker)->hear(connection, path, method, data, size, place);
}

void completed(void* worker, MHD_Connection*, void** place, MHD_RequestTerminationCode) {
  static_cast<Worker*>(worker)->forget(static_cast<Exchange*>(*place));
  *place = nullptr;
}

void connectionNoted(void* worker, MHD_Connection* connection, void**, MHD_ConnectionNotificationCode code) {
  static_cast<Worker*>(worker)->noteConnection(connection, code == MHD_CONNECTION_NOTIFY_STARTED);
}

// Escapes are looked at where it is known what they stand in.
size_t leaveEscapes(void*, MHD_Connection*, char* text) { return strlen(text); }

void hearSignals() {
  struct sigaction action = {};
  action.sa_handler = noteEnd;
  for (int number : {SIGTERM, SIGINT, SIGHUP}) sigaction(number, &action, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

// Others hold it for a moment all the time; who holds it for longer is waited for elsewhere.
bool lockIsFree() {
  for (int i = 0; i < kShortWaits; ++i) {
    if (tools::lookAtLock().state == tools::LockState::kFree) return true;
    usleep(kShortWait);
  }
  return false;
}

// Nothing more comes.
bool isGivenUp(int connection) {
  char next;
  return recv(connection, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

Reply busy() { return inviting(errorReply(503, {ctl::kLocked, "too much is going on; try again"})); }

}  // namespace

Worker::Worker(int listener, Settings settings) : settings_(std::move(settings)) {
  hearSignals();
  daemon_ = MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, hearRequest, this,
                             MHD_OPTION_LISTEN_SOCKET, listener, MHD_OPTION_CONNECTION_TIMEOUT, kIdleSeconds,
                             MHD_OPTION_CONNECTION_LIMIT, kConnections, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
                             kConnectionMemory, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_NOTIFY_COMPLETED, completed,
                             this, MHD_OPTION_NOTIFY_CONNECTION, connectionNoted, this, MHD_OPTION_UNESCAPE_CALLBACK,
                             leaveEscapes, nullptr, MHD_OPTION_END);
  const MHD_DaemonInfo* info = daemon_ ? MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD) : nullptr;
  if (!info) throw ctl::systemRefusal("the server cannot be started", errno);
  events_ = info->epoll_fd;
}

int Worker::serve() {
  while (!ended && !unfit_) {
    wait();
    takeResults();
    look();
    MHD_run(daemon_);
  }
  // What was begun is told, to who is still there.
  const double end = tools::steadySeconds() + 5;
  while (tools::steadySeconds() < end &&
         std::ranges::any_of(exchanges_, [](const Exchange* one) { return one->process.has_value(); })) {
    wait();
    takeResults();
    MHD_run(daemon_);
  }
  MHD_run(daemon_);
  return 0;
}

void Worker::wait() {
  std::vector<struct pollfd> ends = {{events_, POLLIN, 0}};
  for (const Exchange* exchange : exchanges_) {
    if (exchange->process) ends.push_back({exchange->process->descriptor(), POLLIN, 0});
  }
  MHD_UNSIGNED_LONG_LONG milliseconds = 1000;
  if (MHD_get_timeout(daemon_, &milliseconds) != MHD_YES) milliseconds = 1000;
  const bool looks = streams() > 0 || !waiting_.empty();
  const auto most = static_cast<MHD_UNSIGNED_LONG_LONG>(looks ? 1000 * kLookSeconds : 1000);
  poll(ends.data(), ends.size(), static_cast<int>(std::min(milliseconds, most)));
}

void Worker::takeResults() {
  for (Exchange* exchange : exchanges_) {
    if (!exchange->process || !exchange->process->take()) continue;
    exchange->reply = exchange->process->reply();
    exchange->process.reset();
    MHD_resume_connection(exchange->connection);
  }
}

void Worker::look() {
  if (tools::steadySeconds() - looked_ < kLookSeconds) return;
  looked_ = tools::steadySeconds();
  endOld();
  freshenTables();
  unfit_ = unfit_ || shm_lock_count != 0;
  if (streams() > 0) {
    tellNews();
  } else {
    news_.stop();
  }
}

size_t Worker::streams() const {
  return static_cast<size_t>(std::ranges::count_if(exchanges_, [](const Exchange* one) { return one->streams; }));
}

void Worker::wake(Exchange& exchange) {
  if (!exchange.sleeps) return;
  exchange.sleeps = false;
  MHD_resume_connection(exchange.connection);
}

// Whoever may no longer see what comes is told no more; a reader that does not read comes again later.
void Worker::tellNews() {
  const std::string news = news_.look();
  const bool checks = tools::steadySeconds() - checked_ >= kCheckSeconds;
  if (checks) checked_ = tools::steadySeconds();
  for (Exchange* exchange : exchanges_) {
    if (!exchange->streams || exchange->ended) continue;
    if (news_.over() || exchange->unsent.size() > kMostUnsent || (checks && !stillMay(*exchange))) {
      exchange->ended = true;
    } else if (!exchange->greeted && news_.hears()) {
      exchange->greeted = true;
      exchange->unsent += kGreeting + news;
    } else {
      exchange->unsent += news.empty() && checks ? ":\n\n" : news;
    }
    if (exchange->ended || !exchange->unsent.empty()) wake(*exchange);
  }
}

bool Worker::stillMay(const Exchange& exchange) const {
  Request again = exchange.request;
  again.headers["x-kestrove-background"] = "1";
  const Plan made = plan(again, settings_);
  return made.reply && made.reply->events;
}

// A request that comes byte by byte, or that its sender has given up: the library behind does not see an end that came
// together with the last bytes.
void Worker::endOld() {
  for (const auto& [connection, since] : waiting_) {
    const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    if (!info || (tools::steadySeconds() - since < kLongestRequest && !isGivenUp(info->connect_fd))) continue;
    shutdown(info->connect_fd, SHUT_RDWR);
  }
}

void Worker::noteConnection(MHD_Connection* connection, bool begins) {
  if (begins) {
    waiting_[connection] = tools::steadySeconds();
  } else {
    waiting_.erase(connection);
  }
}

void Worker::forget(Exchange* exchange) {
  exchanges_.erase(exchange);
  delete exchange;
}

MHD_Result Worker::hear(MHD_Connection* connection, const char* path, const char* method, const char* data,
                        size_t* size, void** place) {
  auto* exchange = static_cast<Exchange*>(*place);
  if (!exchange) {
    exchange = new Exchange(connection, requestOf(connection, method, path));
    exchanges_.insert(exchange);
    *place = exchange;
    if (!announcesTooMuch(exchange->request)) return MHD_YES;
    return give(connection, tooLong(longestBody(exchange->request, settings_)));
  }
  if (*size > 0) {
    takeBody(*exchange, {data, *size});
    *size = 0;
    return MHD_YES;
  }
  if (exchange->heard) return reply(*exchange);
  exchange->heard = true;
  waiting_.erase(connection);
  return begin(*exchange);
}

// What is too long is dropped until its end: the web server in front hears no answer before.
void Worker::takeBody(Exchange& exchange, std::string_view part) const {
  std::string& body = exchange.request.body;
  const size_t size = body.size() + part.size();
  if (size > kLongestBody && exchange.most == 0) exchange.most = longestBody(exchange.request, settings_);
  exchange.tooLong = exchange.tooLong || (size > kLongestBody && size > exchange.most);
  if (!exchange.tooLong) body.append(part);
}

MHD_Result Worker::begin(Exchange& exchange) {
  if (exchange.tooLong) {
    exchange.reply = tooLong(exchange.most);
    return reply(exchange);
  }
  Plan made = plan(exchange.request, settings_);
  if (!made.reply && !made.own) made.reply = lockIsFree() ? workAtOnce(made) : made.meanwhile();
  if (!made.reply) return workElsewhere(exchange, made);
  exchange.reply = std::move(made.reply);
  return reply(exchange);
}

// Nothing where somebody took the lock meanwhile: it is waited for elsewhere, and what was begun here was but a look.
std::optional<Reply> Worker::workAtOnce(const Plan& plan) {
  tools::limitWaits(0);
  Reply reply = plan.work();
  unfit_ = unfit_ || shm_lock_count != 0;
  return reply.status == 503 ? std::nullopt : std::optional(std::move(reply));
}

MHD_Result Worker::workElsewhere(Exchange& exchange, const Plan& plan) {
  const auto running = std::ranges::count_if(exchanges_, [](const Exchange* one) { return one->process.has_value(); });
  try {
    if (static_cast<size_t>(running) >= kProcesses) throw Failure(busy());
    exchange.process.emplace(plan.work);
    MHD_suspend_connection(exchange.connection);
    return MHD_YES;
  } catch (const Failure& failure) {
    exchange.reply = failure.reply();
  } catch (const ctl::Refusal&) {
    exchange.reply = busy();
  }
  return reply(exchange);
}

MHD_Result Worker::reply(Exchange& exchange) {
  if (!exchange.reply) return MHD_YES;
  if (!exchange.reply->events) return give(exchange.connection, *exchange.reply);
  if (streams() >= kStreams) return give(exchange.connection, busy());
  return giveStream(exchange);
}

}  // namespace api
