// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/sandbox_store.h"

#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "kestrove/kestrove.h"

namespace ctl {

void requireInside() {
  if (access("/run/kestrove/inside", F_OK) != 0) throw Refusal(kRefused, "only inside the sandbox");
}

Image readImage(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string image((std::istreambuf_iterator<char>(file)), {});
  if (image.size() != SHM_SIZE) throw Refusal(kSystem, path + ": no image of a store");
  Image store;
  memcpy(&*store, image.data(), image.size());
  return store;
}

void writeImage(const ShmData& store, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  if (!file.write(reinterpret_cast<const char*>(&store), sizeof store).flush()) {
    throw Refusal(kSystem, path + ": cannot be written");
  }
}

ShmData* makeStore() {
  const int id = shmget(SHM_KEY, SHM_SIZE, IPC_CREAT | IPC_EXCL | 0666);
  void* segment = id == -1 ? reinterpret_cast<void*>(-1) : shmat(id, nullptr, 0);
  if (segment == reinterpret_cast<void*>(-1) || create_lock_file() != 0) {
    throw Refusal(kSystem, std::string("copy of the store: ") + strerror(errno), -1, errno);
  }
  return static_cast<ShmData*>(segment);
}

}  // namespace ctl
