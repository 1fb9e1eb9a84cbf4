// SPDX-License-Identifier: Apache-2.0
#include "tools/ctl/moment.h"

#include <ctime>
#include <regex>

#include "tools/ctl/session.h"

namespace ctl {
namespace {

constexpr char kForm[] = "(\\d{4})-(\\d{2})-(\\d{2})[T ](\\d{2}):(\\d{2})(?::(\\d{2}))?Z?";

struct tm brokenDown(const std::smatch& part) {
  auto number = [&part](size_t group) { return part[group].matched ? std::stoi(part[group].str()) : 0; };
  struct tm fields = {};
  fields.tm_year = number(1) - 1900;
  fields.tm_mon = number(2) - 1;
  fields.tm_mday = number(3);
  fields.tm_hour = number(4);
  fields.tm_min = number(5);
  fields.tm_sec = number(6);
  return fields;
}

// A day that the calendar does not have comes back as another one.
bool exists(const struct tm& given, const struct tm& normal) {
  return given.tm_mon == normal.tm_mon && given.tm_mday == normal.tm_mday && given.tm_hour == normal.tm_hour &&
         given.tm_min == normal.tm_min && given.tm_sec == normal.tm_sec;
}

}  // namespace

Moment parseMoment(const std::string& date, const std::string& time) {
  const std::string text = time.empty() ? date : date + " " + time;
  const Refusal wrong(kUsage, text + ": no time (2026-11-22 04:45:25, in UTC, from 1970 to 2037)");
  std::smatch part;
  if (!std::regex_match(text, part, std::regex(kForm))) throw Refusal(wrong);
  const struct tm given = brokenDown(part);
  if (given.tm_year < 70 || given.tm_year > 137) throw Refusal(wrong);
  struct tm normal = given;
  const int64_t seconds = timegm(&normal);
  if (!exists(given, normal)) throw Refusal(wrong);
  return {seconds, {given.tm_sec, given.tm_min, given.tm_hour, given.tm_mday, given.tm_mon + 1, given.tm_year + 1900}};
}

std::string momentText(int64_t seconds) {
  const auto when = static_cast<time_t>(seconds);
  struct tm utc = {};
  char text[32];
  if (!gmtime_r(&when, &utc) || strftime(text, sizeof text, "%FT%TZ", &utc) == 0) return std::to_string(seconds);
  return text;
}

}  // namespace ctl
