#include "finish_texts.h"

#include "number_text.h"

#include <initializer_list>
#include <vector>

namespace {

void AppendSentence(std::string& InOutText, const std::string& Sentence, const char* Between) {
    if (!Sentence.empty()) {
        InOutText += (InOutText.empty() ? "" : Between) + Sentence;
    }
}

std::string NotChangedText(const FinishResult& Result) {
    if (Result.Failures < 2) {
        return Result.FirstFailure;
    }
    return Result.FirstFailure + ", and " + EntriesText(Result.Failures - 1) +
           " more could not be changed";
}

std::string ChangedLengthText(std::uint64_t Copies) {
    return Copies == 0   ? std::string()
           : Copies == 1 ? "1 copy is not as long as its source was"
                         : NumberText(Copies) + " copies are not as long as their sources were";
}

// "modes, owners and exact dates".
std::string LostProperties(const FinishResult& Result) {
    std::vector<std::string> lost;
    for (const auto& [bLost, name] :
         {std::pair(Result.bModesLost, "modes"), std::pair(Result.bOwnersLost, "owners"),
          std::pair(Result.bTimesLost, "exact dates")}) {
        if (bLost) {
            lost.emplace_back(name);
        }
    }
    std::string list;
    for (std::size_t i = 0; i < lost.size(); ++i) {
        list += i == 0 ? "" : i + 1 == lost.size() ? " and " : ", ";
        list += lost[i];
    }
    return list;
}

std::string LeftAloneText(std::uint64_t Entries) {
    return Entries == 0 ? std::string()
           : Entries == 1
               ? "1 entry was left alone: it is gone, or something else stands there now."
               : EntriesText(Entries) + " were left alone: they are gone, or something "
                                        "else stands there now.";
}

std::string StayPrivateText(std::uint64_t Entries) {
    return Entries == 0   ? std::string()
           : Entries == 1 ? "1 entry that came late stays private: only its owner can read it."
                          : EntriesText(Entries) +
                                " that came late stay private: only their owner can read them.";
}

} // namespace

std::string FinishFailureText(const FinishResult& Result) {
    constexpr const char* kBetween = "; ";
    std::string text;
    AppendSentence(text,
                   Result.Broken.empty() ? Result.Broken
                                         : "cannot set all modes and dates: " + Result.Broken,
                   kBetween);
    AppendSentence(text, NotChangedText(Result), kBetween);
    AppendSentence(text, ChangedLengthText(Result.ChangedLength), kBetween);
    return text;
}

std::string FinishRemark(const FinishResult& Result) {
    const std::string lost = LostProperties(Result);
    std::string text = lost.empty() ? std::string() : "The destination does not keep " + lost + ".";
    AppendSentence(text, LeftAloneText(Result.LeftAlone), " ");
    AppendSentence(text, StayPrivateText(Result.StayPrivate), " ");
    return text;
}

std::string UnreachedText(std::uint64_t Entries, bool bPrivate) {
    if (Entries == 0) {
        return {};
    }
    const std::string copies =
        (Entries == 1 ? "the copy of " : "the copies of ") + EntriesText(Entries);
    if (!bPrivate) {
        return copies + (Entries == 1 ? " has" : " have") + " not got what was to come along";
    }
    return copies + (Entries == 1 ? " is still private: only its owner can read it"
                                  : " are still private: only their owner can read them");
}
