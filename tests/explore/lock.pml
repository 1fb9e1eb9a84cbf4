/* SPDX-License-Identifier: Apache-2.0 */
/* The store's lock as every process uses it: a file lock that a process has or has not, whatever it counts; guards that
   nest and count; the literal lock and unlock of callers, which drop the file lock at every depth; pauses around
   programs that use the store themselves; saves that are ordered by a lock of their own, also where a process goes on
   without the file lock because there is none to get.

   Any process may die at every step; the kernel then gives back what it held. All orders of three processes are run.

   What must hold, always:
     - two operations are never inside the store at once
     - the file is as new as the store was when the last finished save began to read it
     - nobody waits for ever

   Two variants must be refuted:
     NESTED_UNLOCK  the release of an inner guard drops the file lock, and the operation changes something after it
     NO_SAVE_LOCK   saves have no lock of their own */

#ifndef PROCESSES
#define PROCESSES 3
#endif
#ifndef OPERATIONS
#define OPERATIONS 1 /* of each process, besides its own nesting */
#endif
#define NOBODY 255

byte fileOwner = NOBODY; /* of the store's file lock */
byte saveOwner = NOBODY; /* of the lock of the saves */
byte inside = 0;         /* processes in the middle of a change */
byte store = 0;          /* grows with every write */
byte saved = 0;          /* what the file has of it */

#define HAS (fileOwner == _pid)
#define MAY_DIE if :: skip :: goto death fi

/* Granted to who asks, at once when it has it already. */
#define GRANT atomic { (fileOwner == NOBODY || HAS) -> fileOwner = _pid }
#define DROP atomic { if :: HAS -> fileOwner = NOBODY :: else fi }

/* The outermost guard of an operation asks, whatever is counted; inner ones only count. */
#define GUARD guards++; if :: guards == 1 -> GRANT :: else fi
#ifdef NESTED_UNLOCK
#define UNGUARD guards--; DROP
#else
#define UNGUARD guards--; if :: guards == 0 -> DROP :: else fi
#endif

/* In two writes, between which nobody may look. */
#define CHANGE                                                                  \
  atomic { inside++; changing = true; assert(inside == 1); store++ }; MAY_DIE; \
  atomic { inside--; changing = false; store++ }; MAY_DIE

#ifdef NO_SAVE_LOCK
#define ORDERED skip
#else
#define ORDERED atomic { saveOwner == NOBODY -> saveOwner = _pid }
#endif

/* Reads the store and puts it in place: never an older one than is there. */
#define SAVE                                                         \
  ORDERED; gathered = store; MAY_DIE;                                \
  atomic {                                                           \
    assert(gathered >= saved); saved = gathered;                     \
    if :: saveOwner == _pid -> saveOwner = NOBODY :: else fi         \
  }; MAY_DIE

proctype Process() {
  byte guards = 0; /* of one operation, one inside the other */
  byte gathered = 0;
  byte done = 0;
  bool nested = false; /* the caller has locked by itself */
  bool changing = false;
  do
  :: done < OPERATIONS ->
    done++;
    /* What the caller does by itself; an operation drops the lock of one that holds it. */
    if
    :: !nested -> GRANT; nested = true
    :: nested -> DROP; nested = false
    :: true
    fi;
    MAY_DIE;
    if
    /* A change, a save under an inner guard, and something behind it. */
    :: GUARD; CHANGE; GUARD; SAVE; UNGUARD; CHANGE; UNGUARD
    /* A program that uses the store runs in the middle. */
    :: GUARD; CHANGE; DROP; MAY_DIE; GRANT; GUARD; CHANGE; SAVE; UNGUARD; UNGUARD
    /* There is no file lock to get: one write, and the save. */
    :: store++; MAY_DIE; SAVE
    fi
  :: else -> break
  od;
  if :: nested -> DROP :: else fi;
death:
  atomic {
    if :: changing -> inside-- :: else fi;
    DROP;
    if :: saveOwner == _pid -> saveOwner = NOBODY :: else fi
  }
}

init {
  atomic {
    byte i;
    for (i : 1 .. PROCESSES) { run Process() }
  }
}
