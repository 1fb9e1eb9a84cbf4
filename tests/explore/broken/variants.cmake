# SPDX-License-Identifier: Apache-2.0
# Libraries that are broken on purpose, each in one way that the explorer must find. The production sources carry nothing
# of this: a variant is a source in which one text is replaced by another when it is built.
#
# broken(name IN source OLD text NEW text [IN source OLD text NEW text] [COMPILE source...] FINDS operation...)
#   COMPILE   what is compiled anew, where the changed source is a header
#   FINDS     pairs of operations, one of which shows the fault

broken(inner-guards-drop-the-lock
  IN store/segment.cpp
  OLD [[  if (level == Level::kOuter) {
    releaseStoreLock();]]
  NEW [[  if (level != Level::kUnlocked) {
    releaseStoreLock();]]
  FINDS load load net-lan-address add-route reset-stats clear-events)

broken(outermost-guard-trusts-the-count
  IN store/segment.cpp
  OLD [[if (shm_lock_count > 0) return acquireUnderCount();]]
  NEW [[if (shm_lock_count > 0) return acquireInner();]]
  FINDS lost-signal load lost-signal add-route)

broken(save-without-a-lock-of-its-own
  IN config/persist.cpp
  OLD [[  sys::FolderLock ordered(path);
]]
  NEW ""
  FINDS unlocked-name unlocked-place)

broken(load-always-puts-the-state-back
  IN config/persist.cpp
  OLD [[    if (configurationMode()) shm->operationalState = before_;]]
  NEW [[    shm->operationalState = before_;]]
  FINDS state-word load-fields)

broken(target-is-opened-before-its-temporary-file
  IN sys/replace.cpp
  OLD [[    followTarget();
]]
  NEW ""
  IN sys/replace.cpp
  OLD [[  followTarget();
  if (!target_) return false;
]]
  NEW ""
  IN config/persist.cpp
  OLD [[  sys::FolderLock ordered(path);
  sys::Replacement file(path);]]
  NEW [[  sys::Replacement file(path);
  sys::FolderLock ordered(path);]]
  FINDS unlocked-name unlocked-place)

broken(freshening-without-the-hold
  IN net/routes/operations.h
  OLD [[  StoreLock lock;
  if (!lock) return 0;
  DeferredSave save;]]
  NEW [[  if (!StoreLock()) return 0;
  DeferredSave save;]]
  IN net/routes/operations.h
  OLD [[    replaceMarked<Family>(route, route, save);
    slot]]
  NEW [[    deleteRoute<Family>(route);
    addRoute<Family>(&route);
    slot]]
  COMPILE net/routes/route4.cpp net/routes/route6.cpp
  FINDS freshen-routes delete-route freshen-routes6 delete-route6)

broken(event-logged-without-the-lock
  IN events/log.cpp
  OLD [[  StoreLock lock;
  if (!lock) return -1;
  if (shm->config.loggingOperState]]
  NEW [[  if (!StoreLock()) return -1;
  if (shm->config.loggingOperState]]
  FINDS log-event clear-events)

broken(mode-released-before-it-is-stored
  IN net/opmode/state.cpp
  OLD [[  kHandlers[mode](event, context);]]
  NEW [[  kHandlers[mode](event, context);
  lock.release();]]
  FINDS mode-policy-on mode-single-on mode-single-on mode-powered-on mode-single-on single-interface)

broken(programs-run-under-the-lock
  IN store/segment.cpp
  OLD [[LockPause::LockPause() : again_(fileLocked]]
  NEW [[LockPause::LockPause() : again_(false && fileLocked]]
  FINDS net-management-address system-name)

broken(user-added-in-two-holds
  IN users/manage.cpp
  OLD [[  StoreLock lock;
  if (!lock || shm_addUser(&account) != 0) return -1;]]
  NEW [[  if (shm_addUser(&account) != 0) return -1;]]
  FINDS add-user add-user-again)
