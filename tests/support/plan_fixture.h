// Building plans from operands as a person types them. Every test works in a directory of its own,
// which is the current one, so that operands are relative and everything in the plan is absolute.
//
// The directory holds the files a.txt and b.txt, tree/inner.txt, and the empty directory dest.

#pragma once

#include "file_tree.h"
#include "plan_builder.h"
#include "temporary_directory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <variant>
#include <vector>

class PlanFixture : public testing::Test {
protected:
    using Names = std::vector<std::string>;

    PlanFixture() {
        std::filesystem::current_path(Directory.Path());
        WriteFile(Directory / "a.txt", "a");
        WriteFile(Directory / "b.txt", "b");
        WriteFile(Directory / "tree/inner.txt", "inner");
        std::filesystem::create_directory("dest");
    }

    ~PlanFixture() override { std::filesystem::current_path("/"); }

    static TransferRequest Copy(const Names& Operands) {
        TransferRequest request;
        request.Operands.assign(Operands.begin(), Operands.end());
        return request;
    }

    static TransferRequest Move(const Names& Operands) {
        TransferRequest request = Copy(Operands);
        request.bMove = true;
        return request;
    }

    TarvaneTransferPlan Plan(const TransferRequest& Request) const {
        const BuiltPlan built = BuildPlan(Request, ListTracks);
        if (const auto* refusal = std::get_if<PlanRefusal>(&built)) {
            ADD_FAILURE() << (refusal->Sentences.empty() ? "refused" : refusal->Sentences.front());
            return {};
        }
        return std::get<TarvaneTransferPlan>(built);
    }

    // "source -> destination" for every item, with the test's directory left out.
    Names Ways(const TransferRequest& Request) const {
        Names ways;
        for (const TarvaneTransferItemPlan& item : Plan(Request).Items) {
            ways.push_back(Short(item.SourcePath) + " -> " + Short(item.DestinationPath));
        }
        return ways;
    }

    std::string Short(const std::filesystem::path& Path) const {
        const std::string start = Directory.Path().native() + "/";
        const std::string& text = Path.native();
        return text.rfind(start, 0) == 0 ? text.substr(start.size()) : text;
    }

    // The sentences and, before them, the kind. Paths of the test's directory are shortened.
    Names Refusal(const TransferRequest& Request) const {
        const Tree before = TreeOf(Directory.Path());
        const BuiltPlan built = BuildPlan(Request, ListTracks);
        EXPECT_EQ(TreeOf(Directory.Path()), before);
        const auto* refusal = std::get_if<PlanRefusal>(&built);
        if (refusal == nullptr) {
            return {"not refused"};
        }
        Names lines{KindName(refusal->Kind)};
        for (std::string sentence : refusal->Sentences) {
            const std::string start = Directory.Path().native() + "/";
            for (std::size_t at = 0; (at = sentence.find(start)) != std::string::npos;) {
                sentence.erase(at, start.size());
            }
            lines.push_back(sentence);
        }
        return lines;
    }

    TemporaryDirectory Directory;
    // No drive is read.
    TrackLister ListTracks = [](const std::string& Device) {
        return TrackListFailure{"no disc in '" + Device + "'"};
    };

private:
    static std::string KindName(PlanRefusalKind Kind) {
        switch (Kind) {
        case PlanRefusalKind::WrongUsage:
            return "usage";
        case PlanRefusalKind::Failed:
            return "failed";
        case PlanRefusalKind::Canceled:
            return "canceled";
        }
        return "no kind";
    }
};
