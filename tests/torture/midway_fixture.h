// A change in the middle of a run.

#pragma once

#include "read_gate.h"
#include "torture_fixture.h"

// Three sources are copied or moved: "first" is done when the change comes, "big" is half read, and
// the directory "last" has not been begun.
class Midway : public Torture {
protected:
    Midway() {
        WriteFile(Root / "first", "one");
        WriteFile(Root / "big", PatternBytes(1 << 20));
        WriteFile(Root / "last/file", "three");
        Prepared();
    }

    // At the third of the five reads that the file takes.
    End RunWhile(const std::function<void()>& Change,
                 const std::vector<std::string>& Options = {}) const {
        return RunUntil(Root / "big", {.Nth = 3}, Change, Options);
    }
    // "big" is done then, too, and nothing is open for writing.
    End RunWhileLastIsOpened(const std::function<void()>& Change) const {
        return RunUntil(Root / "last/file", {.bOpening = true}, Change, {});
    }

    // What has come to To of the sources, as they were at first, and others.
    Tree Arrived(const std::vector<std::string>& Sources, const Tree& Others = {}) const {
        Tree tree = Others;
        tree.insert({{"disk", "dir"}, {"disk/to", "dir"}});
        for (const std::string& source : Sources) {
            tree["disk/to/" + source] = AtFirst(source);
        }
        return tree;
    }

    const std::vector<std::string> All{"first", "big", "last", "last/file"};
    // The end of a run that the change does not spoil.
    const End Whole{0, Done("4 entries, 1.0 MB."), 4, 1048584};
    const fs::path To = Root / "disk/to";

private:
    End RunUntil(const fs::path& File, ReadGate::Moment When, const std::function<void()>& Change,
                 std::vector<std::string> Arguments) const {
        const ReadGate gate(File, When, Change);
        Arguments.insert(Arguments.end(), {"first", "big", "last", To.string()});
        const End end = Run(Arguments);
        EXPECT_TRUE(gate.WasReached());
        return end;
    }
};
