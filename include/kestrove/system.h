/* External programs, system control, version texts, task table. */
#ifndef KESTROVE_SYSTEM_H
#define KESTROVE_SYSTEM_H

#include "kestrove/layout.h"

#ifdef __cplusplus
extern "C" {
#endif

KESTROVE_API int runCommand(char* const argv[], const char* inputPath, const char* outputPath);
KESTROVE_API int callSystem(const char* command);
KESTROVE_API int callSystem2(const char* command, int length, const char* logPath);
KESTROVE_API int refresh_userinterface_apps(void);
KESTROVE_API int setSystemTime(const int32_t when[6], uint32_t source, const char* user);
KESTROVE_API int reboot(uint32_t source, const char* user);
KESTROVE_API int shutdownSystem(uint32_t source, const char* user);
KESTROVE_API int restart_kestrove(uint32_t source, const char* user);
KESTROVE_API int incrKestroveRestartCounter(void);
KESTROVE_API int resetKestroveRestartCounter(void);
KESTROVE_API int incrKestroveRebootCounter(void);
KESTROVE_API int checkKestroveRebootCounter(void);
KESTROVE_API int resetKestroveRebootCounter(void);
KESTROVE_API int isProcessActive(int item);
KESTROVE_API int getFullVersionNumber(char* buf, int len);
KESTROVE_API int getFullDrelmVersionNumber(char* buf, int len);
KESTROVE_API int getKestroveVersion(char* buf, int len);
KESTROVE_API int getDrelmVersion(char* buf, int len);
KESTROVE_API int getUnitId(char* buf, int len);
KESTROVE_API int getLastLoginTimeStamp(const char* user);
KESTROVE_API int setLastLoginTimeStamp(const char* user);
KESTROVE_API int32_t* shm_getMonitoredTaskPointer(void);
KESTROVE_API int shm_getTaskPid(int task);
KESTROVE_API int shm_setTaskPid(int task, int pid);

#ifdef __cplusplus
}
#endif

#endif
