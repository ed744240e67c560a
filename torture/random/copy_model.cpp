// What the model does with one path after another.

#include "transfer_model.h"

#include "undetermined.h"

#include <cerrno>

TransferModel::Result TransferModel::CopyPath(const std::string& From, const std::string& To) {
    const LibraryStatus status = Library.Status(From);
    if (status.Node == nullptr) {
        Fail("Source does not exist: " + From);
        return Result::Failed;
    }
    if (Library.AreSame(From, To)) {
        Fail("Source and destination are the same path.");
        return Result::Failed;
    }
    if (status.Is(EntryKind::Directory)) {
        return CopyDirectory(From, To);
    }
    return status.Is(EntryKind::File) ? CopyFile(From, To) : CopySpecial(From, To);
}

bool TransferModel::RemoveSource(const std::string& From) {
    const int error = Library.Remove(From);
    return error == 0 ||
           Fail("Copied data but could not remove original '" + From + "': " + ErrorText(error));
}

// Directories.

TransferModel::Result TransferModel::CopyDirectory(const std::string& From, const std::string& To) {
    if (Library.IsInside(From, To)) {
        Fail("Destination cannot be inside the source directory.");
        return Result::Failed;
    }
    const Decision decision = DecideDirectory(From, To);
    if (!decision.bGoOn) {
        return Result::Failed;
    }
    if (decision.bSkip) {
        return SkipTree(From) ? Result::Skipped : Result::Failed;
    }
    int error = 0;
    if (Library.Exists(To, error) && !Library.Status(To).Is(EntryKind::Directory)) {
        const int removal = Library.Remove(To);
        if (removal != 0) {
            Fail("Failed to replace destination path: " + ErrorText(removal));
            return Result::Failed;
        }
    }
    SetPath(From, 0);
    const int creation = Library.CreateDirectories(To);
    if (creation != 0) {
        Fail("Failed to create destination directory: " + ErrorText(creation));
        return Result::Failed;
    }
    ++Done.Items;
    return CopyChildren(From, To);
}

TransferModel::Result TransferModel::CopyChildren(const std::string& From, const std::string& To) {
    // Removing what stood in the way may have removed the source.
    const LibraryStatus source = Library.Status(From);
    if (!source.Is(EntryKind::Directory)) {
        Fail(ErrorText(source.Node == nullptr ? source.Error : ENOTDIR));
        return Result::Failed;
    }
    for (const std::string& name : ModelFiles::Listing(*source.Node)) {
        if (bCanceled) {
            Fail("Transfer canceled.");
            return Result::Failed;
        }
        if (CopyPath(PathIn(From, name), PathIn(To, name)) == Result::Failed) {
            return Result::Failed;
        }
    }
    if (!Case.bMove) {
        return Result::Succeeded;
    }
    const int error = Library.Remove(From);
    if (error != 0 && error != ENOTEMPTY) {
        Fail("Copied data but could not remove original '" + From + "': " + ErrorText(error));
        return Result::Failed;
    }
    return Result::Succeeded;
}

bool TransferModel::SkipTree(const std::string& From) {
    const LibraryStatus status = Library.LinkStatus(From);
    if (status.Node == nullptr) {
        return Fail(ErrorText(status.Error));
    }
    if (!status.Is(EntryKind::Directory)) {
        SkipEntry(From, status.Is(EntryKind::File) ? status.Node->Data.size() : 0);
        return true;
    }
    SkipEntry(From, 0);
    for (const std::string& name : ModelFiles::Listing(*status.Node)) {
        if (!SkipTree(PathIn(From, name))) {
            return false;
        }
    }
    return true;
}

TransferModel::Result TransferModel::SkipEntry(const std::string& From, std::uint64_t Bytes) {
    SetPath(From, Bytes);
    AddBytes(Bytes);
    ++Done.Items;
    ++Skipped.Items;
    Skipped.Bytes += Bytes;
    return Result::Skipped;
}

// Files and all other entries.

bool TransferModel::ClearDirectoryAt(const std::string& Target, const std::string& From,
                                     const std::string& MessagePrefix,
                                     const std::string& NoSourceMessage) {
    const LibraryStatus status = Library.Status(Target);
    if (status.Error != 0 && status.Error != ENOENT) {
        return Fail("Could not inspect destination '" + Target + "': " + ErrorText(status.Error));
    }
    if (!status.Is(EntryKind::Directory)) {
        return true;
    }
    if (Library.LeadsThrough(From, Target)) {
        return Fail(NoSourceMessage);
    }
    const int error = Files.RemoveTree(Target);
    if (Library.Status(ParentOf(Target)).Node == nullptr) {
        throw Undetermined("what has made room was on the way to its own place");
    }
    return error == 0 || Fail(MessagePrefix + ErrorText(error));
}

TransferModel::Result TransferModel::CopyFile(const std::string& From, const std::string& To) {
    if (bCanceled) {
        Fail("Transfer canceled.");
        return Result::Failed;
    }
    const std::uint64_t size = *Library.FileSize(From);
    std::string target = To;
    const Decision decision = DecideFile(From, target);
    if (!decision.bGoOn || decision.bSkip) {
        return decision.bGoOn ? SkipEntry(From, size) : Result::Failed;
    }
    const int error = Library.CreateDirectories(ParentOf(target));
    if (error != 0) {
        Fail("Failed to create destination directory: " + ErrorText(error));
        return Result::Failed;
    }
    const std::string noSource = "Failed to open source file.";
    if (!ClearDirectoryAt(target, From, "Failed to replace destination directory: ", noSource)) {
        if (Message == noSource) {
            SetPath(From, size);
        }
        return Result::Failed;
    }
    SetPath(From, size);
    if (Files.Write(target, Library.Status(From).Node->Data) != 0) {
        Fail("Failed to open destination file.");
        return Result::Failed;
    }
    AddBytes(size);
    FileDone = size;
    ++Done.Items;
    return !Case.bMove || RemoveSource(From) ? Result::Succeeded : Result::Failed;
}

TransferModel::Result TransferModel::CopySpecial(const std::string& From, const std::string& To) {
    std::string target = To;
    const Decision decision = DecideFile(From, target);
    if (!decision.bGoOn || decision.bSkip) {
        return decision.bGoOn ? SkipEntry(From, 0) : Result::Failed;
    }
    const int creation = Library.CreateDirectories(ParentOf(target));
    if (creation != 0) {
        Fail("Failed to create destination directory: " + ErrorText(creation));
        return Result::Failed;
    }
    if (!ClearDirectoryAt(target, From, "", ErrorText(ENOENT))) {
        return Result::Failed;
    }
    const int error = Library.CopySpecial(From, target);
    if (error != 0) {
        Fail(ErrorText(error));
        return Result::Failed;
    }
    SetPath(From, 0);
    ++Done.Items;
    return !Case.bMove || RemoveSource(From) ? Result::Succeeded : Result::Failed;
}
