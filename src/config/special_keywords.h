// SPDX-License-Identifier: Apache-2.0
// Keywords that do more than fill a field.
#pragma once

#include "config/keywords.h"

namespace kestrove {

// Readers of their own.
void readLanCongestionFlag(const ConfigLine& line);
void readDdupMode(const ConfigLine& line);
void readProductId(const ConfigLine& line);
void readBridgeAddress(const ConfigLine& line);
void readBridgeMask(const ConfigLine& line);

// What follows the storing of a field.
void applyCifs();
void applyWebCache();
void applyResolver();

}  // namespace kestrove
