#include "failing_stream.h"

#include <ostream>

namespace {

bool gActive = false;
FailingStream::Call gCall = FailingStream::Call::Write;
int gCallsUntilFailure = 0;

bool FailsNow(FailingStream::Call Call) {
    return gActive && Call == gCall && --gCallsUntilFailure == 0;
}

} // namespace

// The names that the linker gives to the calls and to what replaces them.
std::ostream& RealWrite(std::ostream* Out, const char* Bytes,
                        std::streamsize Size) asm("__real__ZNSo5writeEPKcl");
std::ostream& WrappedWrite(std::ostream* Out, const char* Bytes,
                           std::streamsize Size) asm("__wrap__ZNSo5writeEPKcl");
std::ostream& RealFlush(std::ostream* Out) asm("__real__ZNSo5flushEv");
std::ostream& WrappedFlush(std::ostream* Out) asm("__wrap__ZNSo5flushEv");

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
