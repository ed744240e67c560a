// The question about a taken name, as a model: keys in, and an answer in the end. How it looks is
// its front end's.
//
// It offers only what can apply to the name. Enter alone skips, which never destroys. An answer
// that would replace a directory by a file, or the other way round, has to be confirmed with a
// second key.

#pragma once

#include <functional>
#include <optional>
#include <string>

#include "conflict_choices.h"
#include "conflict_desk.h"
#include "key_press.h"
#include "taken_name.h"
#include "text_field.h"

// What the question needs to know about the disk.
struct RenameAdvice {
    // A full path beside the destination that is free; empty when none was found.
    std::function<std::string()> ProposeFreePath;
    // Why this full path cannot be used, as one short sentence; empty when it can.
    std::function<std::string(const std::string& Path)> Refusal;
};

// For a destination whose name is taken: what is on the disk beside it.
RenameAdvice AdviceFor(const std::string& Destination);

class ConflictQuestion {
public:
    ConflictQuestion(TakenName NameToAskAbout, RenameAdvice NameAdvice);

    // Takes one key. Nothing while the question is still open.
    std::optional<ConflictAnswer> Handle(const KeyPress& Key);

    // "File exists: /x/cover.jpg | overwrite all", the line that stays when it has been answered.
    // Clean; wrap it for the window. It has to be called after Handle has given the answer.
    std::string AnswerLine() const;

    // What is to be shown.
    const TakenName& Asked() const { return Name; }
    // The name that is being edited after `r`.
    const std::optional<TextField>& NewName() const { return Rename; }
    // The answer given removes an entry of another kind and waits for its second key.
    bool IsConfirming() const { return ToConfirm.has_value(); }
    // `?` asked for what is left out where not everything fits: the list of answers, or the rest.
    bool IsListWanted() const { return bListWanted; }
    // Why the latest answer was not taken.
    const std::string& WhyNotTaken() const { return Reason; }

private:
    std::optional<ConflictAnswer> HandleLetter(char Letter);
    std::optional<ConflictAnswer> HandleConfirmation(const KeyPress& Key);
    std::optional<ConflictAnswer> HandleRename(const KeyPress& Key);
    std::optional<ConflictAnswer> OpenRename();
    std::optional<ConflictAnswer> KeepBoth(const ConflictChoice& Choice);
    std::optional<ConflictAnswer> Give(const ConflictChoice& Choice, std::string RenamePath);

    const TakenName Name;
    const RenameAdvice Advice;
    std::optional<TextField> Rename;
    std::optional<ConflictChoice> ToConfirm;
    bool bListWanted = false;
    std::string Reason;
    // The answer in words.
    std::string Given;
};
