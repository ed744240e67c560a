#include "failing_stream.h"

#include "link_names.h"

#include <ostream>

namespace {

bool gActive = false;
FailingStream::Call gCall = FailingStream::Call::Write;
int gCallsUntilFailure = 0;

bool FailsNow(FailingStream::Call Call) {
    return gActive && Call == gCall && --gCallsUntilFailure == 0;
}

} // namespace

std::ostream& RealWrite(std::ostream* Out, const char* Bytes, std::streamsize Size)
    REAL(StreamWrite);
std::ostream& WrappedWrite(std::ostream* Out, const char* Bytes, std::streamsize Size)
    WRAPPED(StreamWrite);
std::ostream& RealFlush(std::ostream* Out) REAL(StreamFlush);
std::ostream& WrappedFlush(std::ostream* Out) WRAPPED(StreamFlush);

std::ostream& WrappedWrite(std::ostream* Out, const char* Bytes, std::streamsize Size) {
    if (FailsNow(FailingStream::Call::Write)) {
        Out->setstate(std::ios::badbit);
        return *Out;
    }
    return RealWrite(Out, Bytes, Size);
}

std::ostream& WrappedFlush(std::ostream* Out) {
    if (FailsNow(FailingStream::Call::Flush)) {
        Out->setstate(std::ios::badbit);
        return *Out;
    }
    return RealFlush(Out);
}

FailingStream::FailingStream(Call CallToFail, int Number) {
    gActive = true;
    gCall = CallToFail;
    gCallsUntilFailure = Number;
}

FailingStream::~FailingStream() {
    gActive = false;
}
