// What a session makes can be kept from everybody else, without the rest of the program noticing.

#include "transfer_session.h"

#include "becomes_true.h"
#include "file_tree.h"
#include "no_descriptors_left.h"
#include "private_umask.h"
#include "temporary_directory.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

namespace {

constexpr bool kPrivate = true;

// From now on the calling thread, and those that it starts, cannot make the system call.
void RefuseCall(std::uint32_t Call) {
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, Call, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(steps), steps};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        throw std::system_error(errno, std::generic_category(), "filtering system calls");
    }
}

// The same with leaving what they share with others, as in some containers.
void RefuseUnshare() {
    RefuseCall(__NR_unshare);
}

class PrivateSession : public testing::Test {
protected:
    PrivateSession() {
        WriteFile(Directory / "from/tree/run.sh", "a");
        WriteFile(Directory / "from/taken", "b");
        WriteFile(Directory / "to/taken", "old");
    }
    ~PrivateSession() override { ::umask(UmaskBefore); }

    // Copies the tree, and then the file, the name of which is taken.
    TarvaneTransferPlan Plan() const {
        TarvaneTransferPlan plan;
        for (const char* name : {"tree", "taken"}) {
            TarvaneTransferItemPlan& item = plan.Items.emplace_back();
            item.SourcePath = Directory / "from" / name;
            item.DestinationPath = Directory / "to" / name;
        }
        return plan;
    }

    static testing::AssertionResult AsksSoon(TransferSession& Session) {
        return BecomesTrue("a conflict is posted", [&] {
            TarvaneTransferConflict conflict;
            return Session.Job().GetPendingConflict(conflict);
        });
    }

    mode_t ModeOf(const std::string& Name) const {
        struct stat status {};
        EXPECT_EQ(::stat((Directory / Name).c_str(), &status), 0) << Name;
        return status.st_mode & 07777U;
    }

    // Of a file that the calling thread makes now.
    mode_t ModeOfNewFile(const std::string& Name) const {
        WriteFile(Directory / Name, "");
        return ModeOf(Name);
    }

    const mode_t UmaskBefore = ::umask(022);
    const TemporaryDirectory Directory;
};

TEST_F(PrivateSession, KeepsWhatItMakesFromOthers) {
    TransferSession session(Plan(), kPrivate);
    ASSERT_TRUE(AsksSoon(session));
    EXPECT_EQ(ModeOf("to/tree"), 0700U);
    EXPECT_EQ(ModeOf("to/tree/run.sh"), 0600U);
}

TEST_F(PrivateSession, LeavesTheUmaskOfTheProgramAsItIs) {
    TransferSession session(Plan(), kPrivate);
    ASSERT_TRUE(AsksSoon(session));
    EXPECT_EQ(ModeOfNewFile("meanwhile"), 0644U);
}

TEST_F(PrivateSession, IsNoneUnlessThatIsWanted) {
    TransferSession session(Plan());
    ASSERT_TRUE(AsksSoon(session));
    EXPECT_EQ(ModeOf("to/tree"), 0755U);
    EXPECT_EQ(ModeOf("to/tree/run.sh"), 0644U);
}

TEST_F(PrivateSession, ChangesTheUmaskOfTheProgramWhereNoThreadMayHaveItsOwn) {
    std::thread([this] {
        RefuseUnshare();
        {
            TransferSession session(Plan(), kPrivate);
            ASSERT_TRUE(AsksSoon(session));
            EXPECT_EQ(ModeOf("to/tree/run.sh"), 0600U);
            EXPECT_EQ(ModeOfNewFile("meanwhile"), 0600U);
        }
        EXPECT_EQ(ModeOfNewFile("afterwards"), 0644U);
    }).join();
}

TEST_F(PrivateSession, LeavesNothingOpenWhenOneOfTwoIsOver) {
    std::thread([this] {
        RefuseUnshare();
        auto first = std::make_unique<TransferSession>(Plan(), kPrivate);
        ASSERT_TRUE(AsksSoon(*first));
        auto second = std::make_unique<TransferSession>(Plan(), kPrivate);
        ASSERT_TRUE(AsksSoon(*second));
        first.reset();
        EXPECT_EQ(ModeOfNewFile("meanwhile"), 0600U);
        EXPECT_EQ(UserUmask(), 022U);
        second.reset();
        EXPECT_EQ(ModeOfNewFile("afterwards"), 0644U);
    }).join();
}

TEST_F(PrivateSession, IsNotWhatTheUserHasChosen) {
    TransferSession session(Plan(), kPrivate);
    ASSERT_TRUE(AsksSoon(session));
    EXPECT_EQ(UserUmask(), 022U);
}

TEST(UserUmaskTest, IsReadWithoutBeingSet) {
    const mode_t before = ::umask(027);
    std::thread([] {
        RefuseCall(__NR_umask);
        EXPECT_EQ(UserUmask(), 027U);
    }).join();
    EXPECT_EQ(::umask(before), 027U);
}

TEST(UserUmaskTest, IsFoundOutWhereTheSystemDoesNotTellIt) {
    const mode_t before = ::umask(027);
    mode_t found = 0;
    {
        const NoDescriptorsLeft noDescriptors;
        found = UserUmask();
    }
    EXPECT_EQ(found, 027U);
    EXPECT_EQ(::umask(before), 027U);
}

} // namespace
