// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/copy.h"

#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "kestrove/kestrove.h"
#include "tools/ctl/settings/private_place.h"

namespace ctl {
namespace {

constexpr int kSpaces = CLONE_NEWNS | CLONE_NEWIPC | CLONE_NEWNET | CLONE_NEWUTS | CLONE_NEWPID;

// Memory that a child writes and its parent reads.
class SharedImage {
 public:
  SharedImage() {
    void* place = mmap(nullptr, sizeof(ShmData), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) throw systemRefusal("memory", errno);
    data_ = static_cast<ShmData*>(place);
  }
  ~SharedImage() { munmap(data_, sizeof(ShmData)); }
  SharedImage(const SharedImage&) = delete;
  SharedImage& operator=(const SharedImage&) = delete;
  ShmData& operator*() const { return *data_; }

 private:
  ShmData* data_;
};

// A file in memory alone: what a child says.
class Report {
 public:
  Report() : fd_(memfd_create("report", MFD_CLOEXEC)) {
    if (fd_ == -1) throw systemRefusal("memory", errno);
  }
  ~Report() { close(fd_); }
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  void write(const Json& json) const {
    const std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    for (size_t done = 0; done < text.size();) {
      const ssize_t wrote = ::write(fd_, text.data() + done, text.size() - done);
      if (wrote <= 0) _exit(1);
      done += static_cast<size_t>(wrote);
    }
  }
  void takeStandardError() const { dup2(fd_, STDERR_FILENO); }
  std::string text() const {
    std::string text(static_cast<size_t>(std::max<off_t>(0, lseek(fd_, 0, SEEK_END))), '\0');
    const ssize_t length = pread(fd_, text.data(), text.size(), 0);
    text.resize(length < 0 ? 0 : static_cast<size_t>(length));
    return text;
  }

 private:
  int fd_;
};

// The store of the real appliance: this process never had it.
void forgetStore() {
  while (kestrove_release() == 0) {
  }
  while (shm && shm_lock_count > 0 && shm_unlock() == 0) {
  }
  if (shm) shm_detach();
  shm = nullptr;
  shm_errno = SHM_OK;
}

void layOutStore(const Image& start) {
  const int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0600);
  void* place = id == -1 ? reinterpret_cast<void*>(-1) : shmat(id, nullptr, 0);
  if (place == reinterpret_cast<void*>(-1)) throw systemRefusal("the store of the copy", errno);
  shm = static_cast<ShmData*>(place);
  memcpy(shm, &*start, sizeof *shm);
  memset(shm->taskPids, 0, sizeof shm->taskPids);
}

struct Inside {
  const Image& start;
  const std::function<Json()>& work;
  PrivatePlace place = {};
  bool ownUserNamespace = false;
  SharedImage after = {};
  Report report = {};
  Report errors = {};  // what goes to standard error
};

Json workInside(const Inside& inside) {
  try {
    forgetStore();
    setenv("KESTROVE_HOME", "", 1);  // a copy has no history
    inside.place.enter(inside.ownUserNamespace);
    layOutStore(inside.start);
    return {{"result", inside.work()}};
  } catch (const Refusal& refusal) {
    return {{"refused", packed(refusal)}};
  } catch (const std::exception& error) {
    return {{"refused", packed(Refusal(kSystem, error.what()))}};
  }
}

[[noreturn]] void runInside(const Inside& inside) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  inside.errors.takeStandardError();
  const Json said = workInside(inside);
  if (shm) memcpy(&*inside.after, shm, sizeof *shm);
  inside.report.write(said);
  _exit(0);
}

// As fork, into new namespaces. Where those are for the privileged alone a user namespace makes it privileged.
pid_t forkInto(int spaces, bool& ownUserNamespace) {
  fflush(nullptr);
  ownUserNamespace = false;
  auto child = static_cast<pid_t>(syscall(SYS_clone, spaces | SIGCHLD, 0, 0, 0, 0));
  if (child != -1 || errno != EPERM) return child;
  ownUserNamespace = true;
  return static_cast<pid_t>(syscall(SYS_clone, spaces | CLONE_NEWUSER | SIGCHLD, 0, 0, 0, 0));
}

int statusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) == -1) {
    if (errno != EINTR) throw systemRefusal("a copy of the appliance", errno);
  }
  return status;
}

void requireWhole(int status, const Report& errors) {
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  fputs(errors.text().c_str(), stderr);
  const std::string how = WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                              : "status " + std::to_string(WEXITSTATUS(status));
  throw Refusal(kSystem, "the work on a copy of the appliance ended with " + how);
}

Json resultOf(const Json& report) {
  if (!report.is_object()) throw Refusal(kSystem, "the work on a copy of the appliance said nothing");
  if (!report.contains("refused")) return report.at("result");
  throw unpacked(report.at("refused"));
}

}  // namespace

Json packed(const Refusal& refusal) {
  return {{"exit", +refusal.exit()}, {"message", refusal.what()}, {"code", refusal.code()}, {"errno", refusal.error()}};
}

Refusal unpacked(const Json& refusal) {
  return {static_cast<Exit>(refusal.at("exit").get<int>()), refusal.at("message").get<std::string>(),
          refusal.at("code").get<int>(), refusal.at("errno").get<int>()};
}

CopyResult onCopy(const Image& start, const std::function<Json()>& work) {
  Inside inside = {start, work};
  const pid_t child = forkInto(kSpaces, inside.ownUserNamespace);
  if (child == -1) throw systemRefusal("a copy of the appliance", errno);
  if (child == 0) runInside(inside);
  requireWhole(statusOf(child), inside.errors);
  Json json = resultOf(Json::parse(inside.report.text(), nullptr, false));
  return {Image(*inside.after), std::move(json)};
}

}  // namespace ctl
