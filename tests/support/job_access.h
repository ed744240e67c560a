// Reads and writes the private members of a job.
//
// An explicit instantiation may name private members, and the friend function that it defines hands
// out the pointer to one, so the header of the engine needs no door for tests. Tests prefer what
// the job shows by itself, and come here for moments and containers that it does not show:
//
//   EXPECT_EQ(PrivateOf<JobMember::ByteSamples>(job).size(), 1u);

#pragma once

#include "tarvanetransfer.h"

namespace JobMember {

template <typename Name, auto Member>
struct Opens {
    friend constexpr auto PointerTo(Name) { return Member; }
};

// Declares the type that stands for one member of the job, and opens that member.
#define OPEN_JOB_MEMBER(Name)                                                                      \
    struct Name {                                                                                  \
        friend constexpr auto PointerTo(Name);                                                     \
    };                                                                                             \
    template struct Opens<Name, &TarvaneTransferJob::Name>

OPEN_JOB_MEMBER(RequestedTopLevelItems);
OPEN_JOB_MEMBER(Mutex);
OPEN_JOB_MEMBER(ByteSamples);
OPEN_JOB_MEMBER(CurrentPath);
OPEN_JOB_MEMBER(StatusText);
OPEN_JOB_MEMBER(PendingConflict);
OPEN_JOB_MEMBER(ConflictRenamePath);
OPEN_JOB_MEMBER(ConflictCondition);
OPEN_JOB_MEMBER(bConflictPending);
OPEN_JOB_MEMBER(bConflictResolved);
OPEN_JOB_MEMBER(ConflictAction);
OPEN_JOB_MEMBER(bDirectoryDecisionSet);
OPEN_JOB_MEMBER(DirectoryDecision);
OPEN_JOB_MEMBER(bFileDecisionSet);
OPEN_JOB_MEMBER(FileDecision);
OPEN_JOB_MEMBER(Stage);
OPEN_JOB_MEMBER(CancelRequested);
OPEN_JOB_MEMBER(Succeeded);
OPEN_JOB_MEMBER(Canceled);
OPEN_JOB_MEMBER(BytesDone);
OPEN_JOB_MEMBER(CurrentFileTotalBytes);
OPEN_JOB_MEMBER(CurrentFileDoneBytes);

#undef OPEN_JOB_MEMBER

} // namespace JobMember

// The member of Job that Name stands for. What Mutex guards is the caller's to lock when another
// thread has the job too.
template <typename Name, typename Job>
auto& PrivateOf(Job& Of) {
    return Of.*PointerTo(Name{});
}
