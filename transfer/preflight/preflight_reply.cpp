#include "preflight_reply.h"

#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

// Writer and reader have the same functions, so that one list of members serves both.
class ReplyWriter {
public:
    template <typename Value>
    void Pass(const Value& Source) {
        static_assert(std::is_trivially_copyable_v<Value>);
        Bytes.append(reinterpret_cast<const char*>(&Source), sizeof(Source));
    }
    void Pass(const std::string& Text) {
        Pass(Text.size());
        Bytes += Text;
    }

    std::string Bytes;
};

class ReplyReader {
public:
    explicit ReplyReader(std::string_view Reply) : Rest(Reply) {}

    // What is not there leaves its target alone.
    template <typename Value>
    void Pass(Value& Out) {
        static_assert(std::is_trivially_copyable_v<Value>);
        if (const std::string_view bytes = Take(sizeof(Value)); !bytes.empty()) {
            std::memcpy(&Out, bytes.data(), sizeof(Value));
        }
    }
    void Pass(std::string& Out) {
        std::size_t length = 0;
        Pass(length);
        Out = Take(length);
    }

    bool IsWhole() const { return !bShort && Rest.empty(); }

private:
    std::string_view Take(std::size_t Length) {
        bShort = bShort || Length > Rest.size();
        const std::string_view bytes = Rest.substr(0, bShort ? 0 : Length);
        Rest.remove_prefix(bytes.size());
        return bytes;
    }

    std::string_view Rest;
    bool bShort = false;
};

template <typename Direction>
void PassFinding(Direction& Reply, PreflightFinding& Finding) {
    Reply.Pass(Finding.Kind);
    Reply.Pass(Finding.bStopsJob);
    Reply.Pass(Finding.NeededBytes);
    Reply.Pass(Finding.AvailableBytes);
    Reply.Pass(Finding.Reason);
    std::string path = Finding.Path.native();
    Reply.Pass(path);
    Finding.Path = std::move(path);
}

template <typename Direction>
void PassFindings(Direction& Reply, PreflightFindings& Findings) {
    PreflightFindings::Tally tally = Findings.Counted();
    std::vector<PreflightFinding> kept = Findings.Kept();
    std::size_t count = kept.size();
    Reply.Pass(tally);
    Reply.Pass(count);
    kept.resize(count);
    for (PreflightFinding& finding : kept) {
        PassFinding(Reply, finding);
    }
    Findings = PreflightFindings(tally, std::move(kept));
}

template <typename Direction>
void PassEnd(Direction& Reply, PreflightEnd& End) {
    PassFindings(Reply, End.Result.Findings);
    Reply.Pass(End.Result.Taken);
    Reply.Pass(End.Result.Entries);
    Reply.Pass(End.Result.Bytes);
    Reply.Pass(End.Result.SkippedEntries);
    Reply.Pass(End.Result.SkippedBytes);
    Reply.Pass(End.Result.FollowedEntries);
    Reply.Pass(End.Result.FollowedBytes);
    Reply.Pass(End.Result.CopiedEntries);
    Reply.Pass(End.Result.CopiedBytes);
    Reply.Pass(End.Result.bRemovesUnselected);
    Reply.Pass(End.Result.bTakesOnlyFiles);
    Reply.Pass(End.Result.bComplete);
    Reply.Pass(End.Failure);
}

} // namespace

std::string ReplyFrom(PreflightEnd End) {
    ReplyWriter writer;
    PassEnd(writer, End);
    return std::move(writer.Bytes);
}

PreflightEnd EndFrom(std::string_view Reply) {
    PreflightEnd end;
    ReplyReader reader(Reply);
    PassEnd(reader, end);
    return reader.IsWhole() ? end : PreflightEnd{{}, "the look was interrupted"};
}
