#include "track_wait.h"

#include <optional>

#include "prompt.h"
#include "track_reader.h"

namespace {

constexpr std::chrono::milliseconds kMoment{500};

class TrackWait : public Activity {
public:
    TrackWait(const std::string& Device, const PromptContext& ContextToUse)
        : Context(ContextToUse), Reader(Device), Start(Context.Loop.Now()) {}

    std::optional<std::variant<TrackList, TrackListFailure>> Result;

    void TakeKey(const KeyPress& Key) override {
        if (Key.Code == KeyCode::Escape) {
            Context.Loop.Requests().Interrupt();
        }
    }

    bool IsOver() override {
        Result = Reader.TakeResult();
        return Result || Context.Loop.Requests().IsAsked();
    }

    void Draw() override {
        if (!bSaid && Context.Screen.IsOutputTerminal() && Context.Loop.Now() - Start >= kMoment) {
            bSaid = true;
            Context.Shown.PrintMessage("waiting for the drive, Esc cancels");
        }
    }

    std::string StatusText() override { return "Waiting for the drive."; }
    int Descriptor() const override { return Reader.OverFd(); }

private:
    const PromptContext& Context;
    TrackReader Reader;
    Terminal::TimePoint Start;
    bool bSaid = false;
};

} // namespace

std::variant<TrackList, TrackListFailure> ListTracksAtPrompt(const std::string& Device,
                                                             const PromptContext& Context) {
    TrackWait wait(Device, Context);
    Context.Loop.Run(wait);
    return wait.Result.value_or(TrackListFailure{});
}
