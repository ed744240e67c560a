#include "transfer_model.h"

#include "undetermined.h"

#include <cstring>

namespace {

// Links that lead back to where they are make trees without an end.
constexpr std::size_t kMostSteps = 400;

std::string Text(std::uint64_t Number) {
    return std::to_string(Number);
}

} // namespace

std::string ErrorText(int Error) {
    return std::strerror(Error);
}

std::string PathIn(const std::string& Directory, const std::string& Name) {
    return Directory + "/" + Name;
}

TransferModel::TransferModel(const RandomCase& CaseToRun, ModelFiles& FilesToChange)
    : Case(CaseToRun), Files(FilesToChange), Library(FilesToChange),
      bCanceled(CaseToRun.bCanceledBefore) {}

Facts TransferModel::Run() {
    const bool bSucceeded = ScanAll() && RunItems();
    if (bSucceeded) {
        Message = (Case.bMove ? "Moved " : "Copied ") + Text(Case.Items.size()) + " item(s).";
    } else if (bCanceled) {
        Message = std::string(Case.bMove ? "Move" : "Copy") +
                  " canceled. Partial destination files may remain.";
    }
    Seen["message"] = Message;
    Seen["ended as"] = bSucceeded ? "succeeded" : bCanceled ? "canceled" : "failed";
    Seen["current path"] = CurrentPath;
    Seen["items"] = Text(Done.Items) + " of " + Text(Total.Items);
    Seen["bytes"] = Text(Done.Bytes) + " of " + Text(Total.Bytes);
    Seen["skipped"] = Text(Skipped.Items) + " items, " + Text(Skipped.Bytes) + " bytes";
    Seen["current file"] = Text(FileDone) + " of " + Text(FileTotal);
    return Seen;
}

bool TransferModel::Fail(const std::string& FailureText) {
    Message = FailureText;
    return false;
}

void TransferModel::SetPath(const std::string& Path, std::uint64_t NewFileTotal) {
    CurrentPath = Path;
    FileTotal = NewFileTotal;
    FileDone = 0;
    if (++Steps > kMostSteps) {
        throw Undetermined("the case is too big");
    }
}

void TransferModel::AddBytes(std::uint64_t Bytes) {
    Done.Bytes += Bytes;
    FileDone += Bytes;
}

// Scanning.

bool TransferModel::ScanAll() {
    for (const CaseItem& item : Case.Items) {
        Totals counted;
        Message.clear();
        if (!Scan(PathIn(Files.RootPath(), item.Source), counted)) {
            if (Message.empty()) {
                Message = "Failed to scan transfer source.";
            }
            return false;
        }
        CountedOfItem.push_back(counted);
    }
    for (const Totals& counted : CountedOfItem) {
        Total.Items += counted.Items;
        Total.Bytes += counted.Bytes;
    }
    return true;
}

bool TransferModel::Scan(const std::string& Source, Totals& OutTotals) {
    const LibraryStatus status = Library.Status(Source);
    if (status.Node == nullptr) {
        return Fail("Source does not exist.");
    }
    SetPath(Source, 0);
    OutTotals.Items = 1;
    if (Library.LinkStatus(Source).Is(EntryKind::Link)) {
        return true;
    }
    if (status.Is(EntryKind::File)) {
        OutTotals.Bytes = status.Node->Data.size();
        return true;
    }
    return !status.Is(EntryKind::Directory) || ScanBelow(Source, OutTotals);
}

bool TransferModel::ScanBelow(const std::string& Directory, Totals& OutTotals) {
    for (const std::string& name : ModelFiles::Listing(*Library.Status(Directory).Node)) {
        const std::string path = PathIn(Directory, name);
        if (bCanceled) {
            return Fail("Transfer canceled.");
        }
        SetPath(path, 0);
        const LibraryStatus status = Library.Status(path);
        if (status.Error != 0) {
            return Fail(ErrorText(status.Error));
        }
        if (status.Is(EntryKind::File)) {
            OutTotals.Bytes += status.Node->Data.size();
        }
        ++OutTotals.Items;
        if (Library.LinkStatus(path).Is(EntryKind::Directory) && !ScanBelow(path, OutTotals)) {
            return false;
        }
    }
    return true;
}

// Items.

bool TransferModel::RunItems() {
    for (std::size_t index = 0; index < Case.Items.size(); ++index) {
        if (bCanceled) {
            return false;
        }
        Message.clear();
        if (!RunItem(Case.Items[index], CountedOfItem[index])) {
            if (Message.empty()) {
                Message = "Transfer failed.";
            }
            return false;
        }
    }
    return true;
}

bool TransferModel::RunItem(const CaseItem& Item, const Totals& Counted) {
    const std::string from = PathIn(Files.RootPath(), Item.Source);
    const std::string to = PathIn(Files.RootPath(), Item.Destination);
    const int error = Library.CreateDirectories(ParentOf(to));
    if (error != 0) {
        return Fail("Failed to create destination directory: " + ErrorText(error));
    }
    return (Case.bMove && MoveByRename(from, to, Counted)) || CopyPath(from, to) != Result::Failed;
}

bool TransferModel::MoveByRename(const std::string& From, const std::string& To,
                                 const Totals& Counted) {
    SetPath(From, Counted.Bytes);
    int error = 0;
    if (Library.Exists(To, error) || error != 0 || Files.Rename(From, To) != 0) {
        return false;
    }
    Done.Bytes += Counted.Bytes;
    FileDone = Counted.Bytes;
    Done.Items += Counted.Items;
    return true;
}
