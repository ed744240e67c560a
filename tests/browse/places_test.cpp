// Where somebody may want to go.

#include "places.h"

#include "mounts.h"
#include "own_mount_namespace.h"
#include "temporary_directory.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class Places : public testing::Test {
protected:
    Places() {
        if (const char* const home = std::getenv("HOME")) {
            HomeBefore = home;
        }
    }
    ~Places() override {
        if (HomeBefore) {
            ::setenv("HOME", HomeBefore->c_str(), 1);
        }
    }

    static std::vector<std::string> Labels() {
        std::vector<std::string> labels;
        for (const NamedPlace& place : KnownPlaces()) {
            labels.push_back(place.Label);
        }
        return labels;
    }

    std::optional<std::string> HomeBefore;
};

TEST_F(Places, BeginWithHomeAndTheRoot) {
    ::setenv("HOME", "/home/ann", 1);
    const std::vector<NamedPlace> places = KnownPlaces();
    ASSERT_GE(places.size(), 2U);
    EXPECT_EQ(places[0].Label, "Home");
    EXPECT_EQ(places[0].Place, "/home/ann");
    EXPECT_EQ(places[1].Label, "/");
    EXPECT_EQ(places[1].Place, "/");
}

TEST_F(Places, HaveNoHomeWhereNobodyHasSaidOne) {
    for (const char* home : {"", "relative"}) {
        ::setenv("HOME", home, 1);
        EXPECT_EQ(Labels().front(), "/") << home;
    }
    ::unsetenv("HOME");
    EXPECT_EQ(Labels().front(), "/");
}

class MountedPlaces : public Places {
protected:
    const OwnMountNamespace Namespace;
};

TEST_F(MountedPlaces, HaveTheDisksWhereTheyAreMounted) {
    const ScopedMount mnt = MountTmpfs("/mnt", "size=1m");
    const ScopedMount disk = MountTmpfs("/mnt/my disk", "size=1m");
    const ScopedMount other = MountTmpfs("/srv", "size=1m");
    const std::vector<std::string> labels = Labels();
    EXPECT_EQ(std::ranges::count(labels, "/mnt"), 1);
    EXPECT_EQ(std::ranges::count(labels, "/mnt/my disk"), 1);
    EXPECT_EQ(std::ranges::count(labels, "/srv"), 0);
}

TEST_F(MountedPlaces, HaveNoDiskWhoseNameOnlyBeginsSo) {
    std::string place = "/mnt-of-test-XXXXXX";
    ASSERT_NE(::mkdtemp(place.data()), nullptr);
    {
        const ScopedMount disk = MountTmpfs(place, "size=1m");
        EXPECT_EQ(std::ranges::count(Labels(), place), 0);
    }
    fs::remove(place);
}

TEST_F(MountedPlaces, HaveADiskThatLiesOverAnotherOnce) {
    const ScopedMount below = MountTmpfs("/mnt", "size=1m");
    const ScopedMount above = MountTmpfs("/mnt", "size=1m");
    EXPECT_EQ(std::ranges::count(Labels(), "/mnt"), 1);
}

} // namespace
