// SPDX-License-Identifier: Apache-2.0
// Loading and saving the configuration file: results, codes, states, and every kind of file that may stand there.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/config/config_fixture.h"
#include "tests/support/files.h"
#include "tests/support/store.h"
#include "tests/support/syslog.h"

namespace kestrove::testing {
namespace {

class LoadTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    clearSyslog();
  }
};

TEST_F(LoadTest, MissingFileIsMinusTwoAndLogged) {
  EXPECT_EQ(-2, load_shared_memory("/etc/config/none"));
  EXPECT_EQ(std::vector<std::string>{"err: Error opening /etc/config/none: No such file or directory"}, syslogLines());
  EXPECT_EQ(0u, shm_errno);
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(LoadTest, FileThatCannotBeOpenedIsMinusOneAndLogged) {
  writeFile(kInput, "");
  EXPECT_EQ(-1, load_shared_memory("/tmp/input.conf/below"));
  ASSERT_EQ(0, symlink("/tmp/loop", "/tmp/loop"));
  EXPECT_EQ(-1, load_shared_memory("/tmp/loop"));
  EXPECT_EQ((std::vector<std::string>{"err: Error opening /tmp/input.conf/below: Not a directory",
                                      "err: Error opening /tmp/loop: Too many levels of symbolic links"}),
            syslogLines());
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(LoadTest, NullPathIsAnInvalidArgument) { EXPECT_FAILS_WITH(SHM_EINVAL, load_shared_memory(nullptr)); }

TEST_F(LoadTest, WithoutTheLockNothingIsOpened) {
  ASSERT_EQ(0, shm_lock());
  ASSERT_EQ(0, shm_unlock());
  dropStore();
  EXPECT_FAILS_WITH(SHM_EATTACH, load_shared_memory("/etc/config/none"));
  EXPECT_FAILS_WITH(SHM_EATTACH, save_shared_memory());
  EXPECT_FAILS_WITH(SHM_EATTACH, write_shared_memory());
  EXPECT_TRUE(syslogLines().empty());
}

TEST_F(LoadTest, FurtherArgumentsAreIgnored) {
  writeFile(kInput, "LAN_MTU 1400\n");
  EXPECT_EQ(0, load_shared_memory(kInput, 1, "two"));
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
}

TEST_F(LoadTest, EmptyFileIsNoFailure) {
  writeFile(kInput, "");
  EXPECT_EQ(0, load_shared_memory(kInput));
  EXPECT_TRUE(syslogLines().empty());
  EXPECT_EQ(0u, shm_errno);
}

TEST_F(LoadTest, DirectoryOpensAndThenOnlyFails) {
  std::string before(reinterpret_cast<const char*>(shm), sizeof *shm);
  EXPECT_EQ(0, load_shared_memory("/etc/config"));
  EXPECT_EQ(uint32_t(SHM_ESYSTEM), shm_errno);
  EXPECT_EQ(0, memcmp(before.data(), shm, sizeof *shm));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(LoadTest, BinaryFileIsReadToItsEnd) {
  std::string bytes(1 << 20, '\0');
  uint32_t random = 1;
  for (char& byte : bytes) byte = static_cast<char>((random = random * 1664525 + 1013904223) >> 24);
  writeFile(kInput, bytes + "\nLAN_MTU 1400\n");
  EXPECT_EQ(0, load_shared_memory(kInput));
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
}

// A hole of 100 MB, which is one endless line of zeros.
TEST_F(LoadTest, HundredMegabytesOfOneLineAreOneLine) {
  constexpr off_t kSize = 100 << 20;
  writeFile(kInput, "LAN_RATE 12345");
  int fd = open(kInput, O_WRONLY);
  ASSERT_EQ(0, ftruncate(fd, kSize));
  ASSERT_EQ(kSize, lseek(fd, kSize, SEEK_SET));
  ASSERT_EQ(18, write(fd, "\nUNKNOWN\nLAN_MTU 7", 18));
  close(fd);
  EXPECT_EQ(0, load_shared_memory(kInput));
  EXPECT_EQ(12345u, shm->config.lanLinkRate);
  EXPECT_EQ(7u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(std::vector<std::string>{"warning: /tmp/input.conf: line 2: undefined parameter \"UNKNOWN\".\n"},
            syslogLines());
}

// Lines of every length around the size of a read, so that each falls across a border of the buffer somewhere.
TEST_F(LoadTest, LinesAcrossReadsAreWhole) {
  constexpr size_t kBuffer = 64 * 1024;
  for (size_t pad = kBuffer - 16; pad <= kBuffer + 2; ++pad) {
    shm->config.lanMaximumTransferUnit = shm->config.lanLinkRate = 0;
    writeFile(kInput, "#" + std::string(pad - 2, 'x') + "\nLAN_MTU 1400\nLAN_RATE 77");
    ASSERT_EQ(0, load_shared_memory(kInput));
    EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit) << pad;
    EXPECT_EQ(77u, shm->config.lanLinkRate) << pad;
  }
}

TEST_F(LoadTest, StateIsPutBackOnEveryPath) {
  writeFile(kInput, "LAN_MTU 1400\n");
  for (uint32_t state : {0u, 1u, 2u, 3u, 4u, 5u, 77u}) {
    shm->operationalState = state;
    EXPECT_EQ(0, load_shared_memory(kInput));
    EXPECT_EQ(state, shm->operationalState);
    EXPECT_EQ(-2, load_shared_memory("/etc/config/none"));
    EXPECT_EQ(state, shm->operationalState);
    EXPECT_EQ(0, load_shared_memory("/etc/config"));
    EXPECT_EQ(state, shm->operationalState);
  }
}

TEST_F(LoadTest, RowsAreOnlyStored) {
  const std::string text =
      "USER_ACCOUNT admin 1 0 0\nROUTE 10.1.0.0 255.255.0.0 192.168.1.1 3\nROUTE6 2001:db8:: 32 fd00::1 3\n"
      "SELEC_ACCEL_ANY 6 0 0 80 80 1 NONE 20000 1 3\nMANAGEMENT_ADDR 4 10.1.1.1 255.0.0.0 4\nMANAGEMENT_ADDR_6 fd00::2 "
      "64\n";
  writeFile(kConfigFile, text);
  EXPECT_EQ(0, load_shared_memory(kConfigFile));
  EXPECT_EQ(1, shm->config.userCount);
  EXPECT_EQ(2, shm->filterTable.ruleCount);
  EXPECT_EQ(1, shm->managementAddressCount);
  EXPECT_EQ(1, shm->ip6Count);
  EXPECT_EQ(3u, shm->routes.slot[0].status) << "no kernel was asked";
  EXPECT_EQ(0u, shm->pendingChanges);
  EXPECT_EQ(0u, shm->eventLog.writeIndex);
  EXPECT_EQ(text, readFile(kConfigFile));
}

class SaveTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    clearSyslog();
  }
  static void aimAt(const std::string& path) {
    memset(shm->config.configFileName, 0, sizeof shm->config.configFileName);
    memcpy(shm->config.configFileName, path.data(), path.size());
  }
  // So many rules that the text is seen to fail before the last of them.
  static void fillRules() {
    for (int i = 0; i < 4000; ++i) shm->filterTable.rule[i].ipVersion = 4;
    shm->filterTable.ruleCount = 4000;
  }
};

TEST_F(SaveTest, EveryStateButConfigurationModeSaves) {
  for (uint32_t state : {0u, 1u, 2u, 3u, 5u}) {
    unlink(kConfigFile);
    shm->operationalState = state;
    EXPECT_EQ(0, save_shared_memory());
    EXPECT_TRUE(fileExists(kConfigFile)) << state;
  }
}

TEST_F(SaveTest, ConfigurationModeWritesOnlyWhenToldTo) {
  writeFile(kConfigFile, "as it was\n");
  shm->operationalState = SHM_STATE_CONFIGURATION;
  EXPECT_EQ(0, save_shared_memory());
  EXPECT_EQ("as it was\n", readFile(kConfigFile));
  EXPECT_EQ(0, write_shared_memory());
  EXPECT_NE("as it was\n", readFile(kConfigFile));
  EXPECT_EQ(0, shm_lock_count);
}

TEST_F(SaveTest, TargetThatCannotBeOpenedIsASystemError) {
  for (const char* path : {"", "/etc/none/kestrove.conf", "/etc/config", "/etc/config/", "/etc/passwd/x"}) {
    aimAt(path);
    SCOPED_TRACE(path);
    EXPECT_FAILS_WITH(SHM_ESYSTEM, save_shared_memory());
    EXPECT_FAILS_WITH(SHM_ESYSTEM, write_shared_memory());
    EXPECT_EQ(0, shm_lock_count);
  }
  EXPECT_FALSE(fileExists("/etc/none"));
}

TEST_F(SaveTest, ErrnoOfTheOpenIsLeftForTheCaller) {
  aimAt("/etc/config");
  errno = 0;
  EXPECT_EQ(-1, save_shared_memory());
  EXPECT_EQ(EISDIR, errno);
}

TEST_F(SaveTest, ReadOnlyFileSystemIsASystemErrorAndKeepsTheFile) {
  writeFile(kConfigFile, "as it was\n");
  ASSERT_EQ(0, mount("/etc/config", "/etc/config", nullptr, MS_BIND, nullptr));
  ASSERT_EQ(0, mount(nullptr, "/etc/config", nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr));
  EXPECT_FAILS_WITH(SHM_ESYSTEM, save_shared_memory());
  EXPECT_EQ("as it was\n", readFile(kConfigFile));
  ASSERT_EQ(0, umount("/etc/config"));
}

TEST_F(SaveTest, NameWithoutATerminatorIsBoundedByItsField) {
  std::string path = "/tmp/" + std::string(123, 'p');
  ASSERT_EQ(sizeof shm->config.configFileName, path.size());
  aimAt(path);
  shm->config.adminUserCount = 0x41414141;  // what stands behind the field
  EXPECT_EQ(0, save_shared_memory());
  EXPECT_TRUE(fileExists(path));
}

TEST_F(SaveTest, FullDiskKeepsTheOldFileAndSaysSo) {
  ASSERT_EQ(0, mount("none", "/etc/config", "tmpfs", 0, "size=64k"));
  ASSERT_EQ(0, save_shared_memory());
  std::string old = readFile(kConfigFile);
  writeFile("/etc/config/ballast", std::string(50 * 1024, 'x'));
  for (int i = 0; i < 100; ++i) shm->filterTable.rule[i].ipVersion = 4;
  shm->filterTable.ruleCount = 100;  // 16 KiB, all of it in the buffer until the end
  EXPECT_EQ(0, save_shared_memory());
  EXPECT_EQ(old, readFile(kConfigFile));
  EXPECT_EQ(std::vector<std::string>{"err: Error writing /etc/config/kestrove.conf: No space left on device"},
            syslogLines());
  unlink("/etc/config/ballast");
  EXPECT_EQ(0, save_shared_memory());
  EXPECT_NE(old, readFile(kConfigFile));
}

TEST_F(SaveTest, DiskThatFillsUpAmongTheRulesIsAWriteError) {
  ASSERT_EQ(0, mount("none", "/etc/config", "tmpfs", 0, "size=256k"));
  ASSERT_EQ(0, save_shared_memory());
  std::string old = readFile(kConfigFile);
  fillRules();
  EXPECT_FAILS_WITH(SHM_EIO, save_shared_memory());
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(old, readFile(kConfigFile));
  EXPECT_EQ(std::vector<std::string>{"err: Error writing /etc/config/kestrove.conf: No space left on device"},
            syslogLines());
  EXPECT_EQ(0, shm_lock_count);
}

// More than one buffer of text stands before the rules.
TEST_F(SaveTest, DiskThatFillsUpBeforeTheRulesIsNoneOfTheirs) {
  for (uint32_t i = 0; i < SHM_ROUTES; ++i) shm->routes.slot[i] = {i, 0, 0, 1, 1, i + 1};
  shm->routes.head = 0;
  aimAt("/dev/full");
  for (int rules : {1, 2, 4000}) {
    shm->filterTable.ruleCount = rules;
    shm_errno = 0;
    errno = 0;
    EXPECT_EQ(0, save_shared_memory());
    EXPECT_EQ(uint32_t{SHM_EIO}, shm_errno);
    EXPECT_EQ(ENOSPC, errno);
  }
}

TEST_F(SaveTest, DeviceThatTakesNothing) {
  aimAt("/dev/full");
  EXPECT_EQ(0, save_shared_memory());
  fillRules();
  EXPECT_FAILS_WITH(SHM_EIO, save_shared_memory());
  struct stat status;
  ASSERT_EQ(0, stat("/dev/full", &status));
  EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(SaveTest, FileIsReplacedUnderItsOwnerAndMode) {
  writeFile(kConfigFile, "as it was\n");
  ASSERT_EQ(0, chown(kConfigFile, 12, 34));
  ASSERT_EQ(0, chmod(kConfigFile, 0640));
  struct stat before, after;
  ASSERT_EQ(0, stat(kConfigFile, &before));
  ASSERT_EQ(0, save_shared_memory());
  ASSERT_EQ(0, stat(kConfigFile, &after));
  EXPECT_NE(before.st_ino, after.st_ino);
  EXPECT_EQ(12u, after.st_uid);
  EXPECT_EQ(34u, after.st_gid);
  EXPECT_EQ(0100640u, after.st_mode);
}

TEST_F(SaveTest, SavedFileIsReadBackUnchanged) {
  writeFile(kInput, "LAN_MTU 1400\nSSHD 1\nBANNER 0\nPBR 9\nSYS_NAME a name\nSYS_DESCRIPTION not saved\n");
  ASSERT_EQ(0, load_shared_memory(kInput));
  ASSERT_EQ(0, save_shared_memory());
  std::string saved = readFile(kConfigFile);
  shm->config.lanMaximumTransferUnit = 0;
  shm->config.sshdOperState = shm->config.bannerOperState = shm->config.pbrOperState = 77;
  strcpy(shm->config.sysName, "another");
  ASSERT_EQ(0, load_shared_memory(kConfigFile));
  EXPECT_EQ(1400u, shm->config.lanMaximumTransferUnit);
  EXPECT_EQ(1, shm->config.sshdOperState);
  EXPECT_EQ(2, shm->config.bannerOperState);
  EXPECT_EQ(3, shm->config.pbrOperState);
  EXPECT_STREQ("a name", shm->config.sysName);
  EXPECT_STREQ("not saved", shm->config.sysDescription);
  ASSERT_EQ(0, save_shared_memory());
  EXPECT_EQ(saved, readFile(kConfigFile));
}

}  // namespace
}  // namespace kestrove::testing
