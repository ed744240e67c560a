// Output streams that fail on demand, where no file system can make them: small writes stay in the
// stream's buffer, so that a full disk is noticed at the first large one only.
//
// Requires: the executable wraps StreamWrite and StreamFlush, and links failing_stream.cpp.

#pragma once

// Fails one call for the lifetime of the object; one object at a time.
class FailingStream {
public:
    enum class Call {
        Write,
        Flush,
    };

    // Number counts from 1.
    FailingStream(Call CallToFail, int Number);
    ~FailingStream();
    FailingStream(const FailingStream&) = delete;
    FailingStream& operator=(const FailingStream&) = delete;
};
