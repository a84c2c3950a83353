// Runs of this program that a run starts ("Call Script") end with it. Each
// child run is put in one job object that ends its processes when the run
// ends, however it ends (its last step, a stop, the time limit, a failure),
// and, the job being closed with the process, when this process is killed.
#pragma once

#include <windows.h>

// The environment variables that tell a child run how deep it is and which
// process is its parent.
#define CALL_DEPTH_VARIABLE "ZANTORUNNER_CALL_DEPTH"
#define PARENT_RUN_VARIABLE "ZANTORUNNER_PARENT_RUN"
// How deep child runs may nest: the 17th fails with words.
enum { MAX_CALL_DEPTH = 16 };

// This process's depth: 0 for a run started by a person.
int CallDepth();
// Around the start of a child run: the environment it inherits names its
// depth and its parent, and is put back afterwards.
void EnterChildRunEnvironment();
void LeaveChildRunEnvironment();
// In a child run, from the process's start: a watch that ends this
// process, after its own child runs, as soon as its parent asks (the end of
// the parent's run) or the parent process is gone, however it went (a parent killed
// from outside cannot end its children itself).
void WatchParentRun();
// Around the making of a child run. Between the two, nothing can end this
// run's children: a child run that exists is always in the job and the list,
// even when a stop or the end of this process comes while it is being made
// (a child made just as its parent ended would otherwise run on, unknown to
// anyone, until its slow start showed it that its parent was gone).
// BeginChildRunStart is false, and nothing is to be made or finished, when
// this process is already ending its child runs for good.
bool BeginChildRunStart();
// After the system made the child (null when it did not): the child goes in
// the job and the list; false when the system refused the job (the child then
// runs outside it, still in the list).
bool FinishChildRunStart(HANDLE process);
// Ends every child run of the run that is ending, each after its own child
// runs, and waits (a few seconds at most) until they are gone.
void EndChildRuns();
// The same with a limit of its own; with 0 the children are asked and not
// waited for.
void EndChildRunsWithin(DWORD milliseconds);
// When this process ends: its child runs are asked to end (each asks its
// own first), and a child run started after it is ended at once.
void CloseChildRuns();
