// The real terminal, or the pipe or file in its place, and the real signals.

#pragma once

#include <optional>

#include "signal_inbox.h"
#include "terminal.h"
#include "terminal_device.h"

// Make it before other threads are started: they inherit its signal mask.
class SystemTerminal : public Terminal {
public:
    SystemTerminal();

    TimePoint Now() const override { return std::chrono::steady_clock::now(); }
    Events Wait(std::chrono::microseconds Timeout, int Descriptor) override;
    bool IsForeground() const override { return Device.IsForeground(); }
    bool IsClosed() const override { return bOutputTerminal && Device.IsClosed(); }
    bool Receives(int Signal) const override { return Signals->Receives(Signal); }
    bool EnterKeyMode() override { return Device.EnterKeyMode(); }
    void LeaveKeyMode() override { Device.LeaveKeyMode(); }
    bool TakesKeys() const override { return Device.KeyFd() >= 0; }
    bool StopBy(int StopSignal) override { return Signals->StopBy(StopSignal); }
    bool IsOutputTerminal() const override { return bOutputTerminal; }
    bool CanRedraw() const override { return bCanRedraw; }
    bool CanAsk() const override { return bCanAsk; }
    bool CanDraw() const override { return Device.CanDraw(); }
    bool IsUtf8() const override { return bUtf8; }
    TerminalSize Size() const override { return Device.Size(); }
    void Write(std::string_view Bytes) override;
    void Close() override;
    void SendSignalAfter(std::chrono::seconds Delay, int Signal) override {
        ::SendSignalAfter(Delay, Signal);
    }
    void FinishWriting() override { Device.FinishWriting(); }
    void Exit(int Status) override;

private:
    std::optional<SignalInbox> Signals;
    TerminalDevice Device;
    // As it was at the start: a terminal that has been closed looks like none.
    const bool bOutputTerminal;
    const bool bCanRedraw;
    const bool bCanAsk;
    const bool bUtf8;
};
