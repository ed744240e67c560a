#include "fuzz_target.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "screen_text.h"

void Expect(bool bHolds, const char* What) {
    if (!bHolds) {
        std::fprintf(stderr, "Does not hold: %s.\n", What);
        std::abort();
    }
}

// Byte by byte, and not as CleanForScreen does it: that may be what is wrong.
void ExpectClean(std::string_view Text) {
    while (!Text.empty()) {
        const std::size_t length = Utf8SequenceLength(Text);
        Expect(length > 0, "the text is valid UTF-8");
        const auto first = static_cast<unsigned char>(Text[0]);
        Expect(first >= 0x20 && first != 0x7F, "the text has no control character");
        const bool bLateControl = first == 0xC2 && static_cast<unsigned char>(Text[1]) < 0xA0;
        Expect(!bLateControl, "the text has none of the later control characters");
        Expect(Text.substr(0, 3) < "\u202A" || Text.substr(0, 3) > "\u202E",
               "the text has nothing that turns its direction");
        Text.remove_prefix(length);
    }
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Expect(EnsureUtf8Locale(), "the machine has a UTF-8 locale");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
    RunInput({reinterpret_cast<const char*>(Data), Size});
    return 0;
}
