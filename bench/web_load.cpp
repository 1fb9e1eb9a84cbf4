// SPDX-License-Identifier: Apache-2.0
// The clients of bench/web.py, and who else uses the store meanwhile:
//   load SOCKET SECONDS CLIENTS PATH HEADER   asks as fast as it is answered; prints requests, failures, p50, p99 (ms)
//   pace SOCKET SECONDS RATE PATH HEADER      asks so often a second, whatever becomes of the answers; prints the same
//   locked RATE                               so many locked operations a second; prints each second how many there
//   were hold MILLISECONDS EVERY                   has the store for so long, every so many milliseconds
#include <kestrove/kestrove.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

double now() {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void sleepUntil(double moment) {
  const double left = moment - now();
  if (left > 0) usleep(static_cast<useconds_t>(left * 1e6));
}

struct Client {
  int fd = -1;
  double begun = 0;
  std::string answer;
};

struct Target {
  std::string socket;
  std::string request;
};

Target targetOf(char** words) {
  return {words[0], std::string("GET ") + words[3] + " HTTP/1.1\r\nHost: localhost\r\n" + words[4] + "\r\n\r\n"};
}

// Where the server has no place left for it, it counts as a failure.
bool begin(Client& client, const Target& target) {
  struct sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  target.socket.copy(address.sun_path, sizeof address.sun_path - 1);
  client = {.fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), .begun = now(), .answer = {}};
  if (connect(client.fd, reinterpret_cast<const struct sockaddr*>(&address), sizeof address) == 0 &&
      write(client.fd, target.request.data(), target.request.size()) == static_cast<ssize_t>(target.request.size())) {
    return true;
  }
  close(client.fd);
  client.fd = -1;
  return false;
}

struct Tally {
  std::vector<double> milliseconds;
  size_t failures = 0;

  void add(const Client& client) {
    milliseconds.push_back((now() - client.begun) * 1000);
    if (!client.answer.starts_with("HTTP/1.1 200")) ++failures;
  }
  double at(double share) {
    if (milliseconds.empty()) return 0;
    const auto place = static_cast<size_t>(share * static_cast<double>(milliseconds.size() - 1));
    std::nth_element(milliseconds.begin(), milliseconds.begin() + static_cast<std::ptrdiff_t>(place),
                     milliseconds.end());
    return milliseconds[place];
  }
  void print() { printf("%zu %zu %.3f %.3f\n", milliseconds.size(), failures, at(0.5), at(0.99)); }
};

// Only how it begins and that it ends is looked at.
bool ended(Client& client) {
  char buffer[65536];
  const ssize_t length = read(client.fd, buffer, sizeof buffer);
  if (length > 0 && client.answer.size() < 16)
    client.answer.append(buffer, static_cast<size_t>(std::min<ssize_t>(length, 16)));
  return length <= 0;
}

void takeAnswers(std::vector<Client>& clients, Tally& tally, double until) {
  std::vector<struct pollfd> ends;
  for (const Client& client : clients) ends.push_back({client.fd, POLLIN, 0});
  poll(ends.data(), ends.size(), std::max(0, static_cast<int>((until - now()) * 1000)));
  for (size_t i = 0; i < clients.size(); ++i) {
    if (clients[i].fd == -1 || !(ends[i].revents & (POLLIN | POLLHUP | POLLERR)) || !ended(clients[i])) continue;
    tally.add(clients[i]);
    close(clients[i].fd);
    clients[i].fd = -1;
  }
}

int load(char** words) {
  const Target target = targetOf(words);
  const double end = now() + atof(words[1]);
  std::vector<Client> clients(static_cast<size_t>(atoi(words[2])));
  Tally tally;
  while (now() < end) {
    for (Client& client : clients) {
      if (client.fd == -1 && !begin(client, target)) ++tally.failures;
    }
    takeAnswers(clients, tally, end);
  }
  tally.print();
  return 0;
}

// Who waits for an answer keeps nobody from asking: so are the waits of all counted.
int pace(char** words) {
  const Target target = targetOf(words);
  const double start = now();
  const double end = start + atof(words[1]);
  const double pause = 1 / atof(words[2]);
  std::vector<Client> clients;
  Tally tally;
  for (double due = start; due < end || !clients.empty();) {
    if (due < end && now() >= due) {
      Client client;
      if (begin(client, target))
        clients.push_back(client);
      else
        ++tally.failures;
      due += pause;
    }
    takeAnswers(clients, tally, due < end ? due : now() + 1);
    std::erase_if(clients, [](const Client& client) { return client.fd == -1; });
  }
  tally.print();
  return 0;
}

int locked(char** words) {
  const double pause = 1 / atof(words[0]);
  uint32_t value = 0;
  double due = now();
  for (double second = due + 1;; second += 1) {
    int count = 0;
    for (; now() < second; due += pause) {
      sleepUntil(due);
      if (getKestroveConfigItem(SHM_ITEM_LAN_LINK_RATE, &value) == 0) ++count;
    }
    printf("%d\n", count);
    fflush(stdout);
  }
}

int hold(char** words) {
  for (double due = now();; due += atof(words[1]) / 1000) {
    sleepUntil(due);
    if (kestrove_hold() != 0) return 1;
    usleep(static_cast<useconds_t>(atoi(words[0]) * 1000));
    kestrove_release();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "load" && argc == 7) return load(argv + 2);
  if (what == "pace" && argc == 7) return pace(argv + 2);
  if (what == "locked" && argc == 3) return locked(argv + 2);
  if (what == "hold" && argc == 4) return hold(argv + 2);
  return 2;
}
