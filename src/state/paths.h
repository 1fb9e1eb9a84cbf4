// SPDX-License-Identifier: Apache-2.0
// Where saved states live, and what stands in their archives.
#pragma once

#include "kestrove/segment.h"
#include "store/text.h"

#define STATE_DOCUMENTS "/usr/local/apache2/htdocs/"
#define STATE_STAGING_FOLDER STATE_DOCUMENTS "state"
#define STATE_STAGING STATE_STAGING_FOLDER "/"

namespace kestrove {

constexpr char kMakeStaging[] = "mkdir " STATE_STAGING " > /dev/null 2>&1";
constexpr char kEmptyStaging[] = "rm -f " STATE_STAGING "* > /dev/null 2>&1";
constexpr char kCopy[] = "cp %s %s > /dev/null 2>&1";

// A file of the system and its copy in the archive.
struct StateFile {
  const char* path;
  const char* copy;
};
constexpr char kConfigurationCopy[] = STATE_STAGING "kestrove.conf.configSaved";
constexpr StateFile kAgentFiles[] = {
    {"/var/config/snmpd.conf", STATE_STAGING "snmpd.conf.configSaved"},
    {"/var/net-snmp/snmpd.conf", STATE_STAGING "varsnmpd.conf.configSaved"},
};
constexpr StateFile kPasswordFile = {"/etc/passwd", STATE_STAGING "passwd.configSaved"};

// The configuration file that the store names.
class ConfigurationPath {
 public:
  ConfigurationPath() { copyField(text_, sizeof text_, shm->config.configFileName); }
  const char* text() const { return text_; }

 private:
  char text_[sizeof(ConfigRecord::configFileName) + 1];
};

}  // namespace kestrove
