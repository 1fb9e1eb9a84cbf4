// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/settings/image.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "kestrove/kestrove.h"
#include "tools/common/hold.h"
#include "tools/ctl/settings/copy.h"

namespace ctl {
namespace {

constexpr char kFactoryDefaults[] = "/etc/config/factory.defaults";

struct Minimums {
  uint32_t rate;
  uint32_t mtu;
};
constexpr Minimums kDrelmMinimums = {256000, 128};
constexpr Minimums kMinimums = {10000, 576};

void setMinimums(ShmData& store) {
  const Minimums& minimums = store.config.productId == SHM_PRODUCT_DRELM ? kDrelmMinimums : kMinimums;
  store.config.minRate = minimums.rate;
  store.config.minMtu = minimums.mtu;
}

void setDefaultRule(ShmData& store) {
  FilterRule& rule = store.filterTable.rule[0];
  rule = {};
  rule.ipVersion = store.config.ipv6Support == SHM_ON ? SHM_FAMILY_ANY : SHM_FAMILY_IPV4;
  rule.priority = 8;
  rule.accel = SHM_ON;
  rule.ruleAction = SHM_RULE_ACTIVE;
  rule.target = SHM_TARGET_ACCELERATE;
  rule.bandwidth = static_cast<int32_t>(store.config.minRate);
  store.filterTable.ruleCount = 1;
}

template <typename Slot, size_t N>
void freeSlots(Slot (&slots)[N]) {
  for (Slot& slot : slots) slot.inUse = slot.next = SHM_NO_SLOT;
}

// What no file says, and what is no setting: it stays as the appliance has it.
void takePlatform(ShmData& store, const ShmData& running) {
  store.config.hardwarePlatform = running.config.hardwarePlatform;
  store.config.ipv6Support = running.config.ipv6Support;
  store.config.wanOptSupport = running.config.wanOptSupport;
  store.statistics.accumulationInterval = running.statistics.accumulationInterval;
}

void readFile(const char* path) {
  if (load_shared_memory(path) < 0) throw systemRefusal(path, errno != 0 ? errno : EIO);
}

// What a start does: the defaults first, then the file, then the account of the old keys.
Json readAsAtStart(const std::string& path) {
  load_shared_memory(kFactoryDefaults);  // without them the store begins with zeros
  setMinimums(*shm);
  setDefaultRule(*shm);
  readFile(path.c_str());
  addOldUser();
  return nullptr;
}

void requireReadable(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd == -1) throw systemRefusal(path, errno);
  close(fd);
}

}  // namespace

Image::Image() : data_(std::make_unique<ShmData>()) {}

Image::Image(const ShmData& store) : data_(std::make_unique_for_overwrite<ShmData>()) {
  memcpy(data_.get(), &store, sizeof store);
}

Image& Image::operator=(const Image& other) {
  if (this != &other) *this = Image(other);
  return *this;
}

Image emptyImage() {
  Image image;
  image->operationalState = SHM_STATE_OPERATIONAL;
  freeSlots(image->routes.slot);
  freeSlots(image->routes6.slot);
  setMinimums(*image);
  setDefaultRule(*image);
  return image;
}

Image runningImage(const Session& session) {
  awaitLock(session);
  tools::Hold hold;
  if (!hold) throw refusal("the store cannot be locked");
  return Image(*shm);
}

Image fileImage(const Session& session, const std::string& path) {
  requireReadable(path);
  Image start = emptyImage();
  takePlatform(*start, *runningImage(session));
  const std::string whole = std::filesystem::absolute(path).string();
  return onCopy(start, [&whole] { return readAsAtStart(whole); }).after;
}

Image savedImage(const Session& session) {
  return fileImage(session, text(runningImage(session)->config.configFileName));
}

}  // namespace ctl
