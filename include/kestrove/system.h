/* SPDX-License-Identifier: Apache-2.0 */
/* External programs, system control, version texts, task table.

   Functions of the store take its lock for their work and give -1 with the lock's code when it cannot be taken. A null
   pointer where a text, a vector or a buffer is needed gives -1 with SHM_EINVAL. "source" and "user" stamp the events;
   a null user counts as an empty name; an event that cannot be logged leaves its code and changes no result. Results
   are 0 where nothing else is said. Where nothing is said of it, an operation saves nothing, logs no event, does not
   signal the engine and runs no program. */
#ifndef KESTROVE_SYSTEM_H
#define KESTROVE_SYSTEM_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The launchers raise the user id to 0 before anything else and give -1, with the reason in syslog, when that is
   refused. They take no lock and set no code.

   Programs named without a path are looked for in /usr/sbin, /usr/bin, /sbin and /bin instead of PATH where PATH may
   not be trusted: in a program that was started with more rights than its caller's (setuid, say), and when PATH has an
   entry that is not absolute or that leads to or through a folder in which others than root may put a program. The
   caller's own PATH stays as it is. */

/* Runs argv[0] without a shell and waits for it. The paths become its standard input, and its standard output and
   error; both are created if missing and never shortened; null leaves the caller's streams. The exit status, 0 to 255;
   -1 when the process could not be made or was ended by a signal. A program that cannot be started gives 0, with the
   reason in syslog. */
KESTROVE_API int runCommand(char* const argv[], const char* inputPath, const char* outputPath);

/* Runs a program line through the shell as it stands. The raw status of system(). */
KESTROVE_API int callSystem(const char* command);

/* The same as callSystem. The length and the path of a log file, null for none, have no effect: nothing is logged. */
KESTROVE_API int callSystem2(const char* command, int length, const char* logPath);

/* Servers, clock, power and the engine. */

/* Rewrites the configurations of the web, SNMP and SSH servers, by programs of the appliance, for the applied
   management addresses and makes those that are switched on read them again. Takes the lock for each reading; while
   a program runs it has none. Always 0. */
KESTROVE_API int refresh_userinterface_apps(void);

/* Stops the engine, sets the system clock and the hardware clock (UTC), starts the engine and logs event 13. Takes over
   a second, and runs three programs. Saves nothing. when: seconds, minutes, hours, day, month from 1, full year, passed
   on unchanged. -1 with SHM_ESYSTEM when a clock tool could not be run: the engine stays switched off and nothing is
   logged. */
KESTROVE_API int setSystemTime(const int32_t when[6], uint32_t source, const char* user);

/* Logs event 3 and runs the program /sbin/reboot, whose runCommand result is given. */
KESTROVE_API int reboot(uint32_t source, const char* user);

/* Logs event 1 and runs the program /sbin/poweroff, whose runCommand result is given. */
KESTROVE_API int shutdownSystem(uint32_t source, const char* user);

/* Clears both counters (which saves the store; a failed save is passed over), switches the engine on (item 15) and
   ends the running one: with source 1 that is the calling process, which exits with status 0; otherwise through the
   program killall, whose runCommand result is given. */
KESTROVE_API int restart_kestrove(uint32_t source, const char* user);

/* Engine starts in a row, not saved. 0 up to the fourth; from the fifth on -1 with SHM_ESTARTS, counted all the
   same. */
KESTROVE_API int incrKestroveRestartCounter(void);
KESTROVE_API int resetKestroveRestartCounter(void);

/* Reboots in a row because of the engine, saved. 0 up to the fourth, -1 with the code of a failed save; from the
   fifth on -1 with SHM_EREBOOTS, counted but not saved. */
KESTROVE_API int incrKestroveRebootCounter(void);

/* -1 with SHM_EREBOOTS when five or more are counted, else 0. */
KESTROVE_API int checkKestroveRebootCounter(void);

/* Clears the counter and saves the store. 0; -1 with the code of a failed save. */
KESTROVE_API int resetKestroveRebootCounter(void);

/* The value of a configuration item, 2 (off) when it cannot be read. For the server switches: 11 SNMP, 13 web,
   17 SSH. */
KESTROVE_API int isProcessActive(int item);

/* Texts of the unit: at most len bytes, the rest of len zeroed, no terminator when the text fills it.
   SHM_EINVAL: a negative len. */
KESTROVE_API int getFullVersionNumber(char* buf, int len);
KESTROVE_API int getFullDrelmVersionNumber(char* buf, int len);
KESTROVE_API int getKestroveVersion(char* buf, int len);
KESTROVE_API int getDrelmVersion(char* buf, int len);
KESTROVE_API int getUnitId(char* buf, int len);

/* Seconds since the epoch of the last log-in of the account with exactly this name. SHM_ENOUSER: none. */
KESTROVE_API int getLastLoginTimeStamp(const char* user);

/* Stamps the first account whose name begins with the text with the present time and saves the store (a failed save
   leaves its code, the result is 0 all the same). SHM_ENOUSER: none. */
KESTROVE_API int setLastLoginTimeStamp(const char* user);

/* The process ids of the tasks: 0 snmpd, 1 httpd, 2 statsd, 3 sshd, 4 kestrove (the engine), 5 miscMonitor,
   6 monitor. */

/* The seven slots in the store, to be read without the lock; null without it. */
KESTROVE_API int32_t* shm_getMonitoredTaskPointer(void);

/* Slots 1 to 6; another number gives -1 without a code. */
KESTROVE_API int shm_getTaskPid(int task);
KESTROVE_API int shm_setTaskPid(int task, int pid);

#ifdef __cplusplus
}
#endif

#endif
