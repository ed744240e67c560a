#include "entry_text.h"

#include <vector>

#include "date_text.h"
#include "number_text.h"
#include "quoted.h"
#include "screen_text.h"
#include "size_text.h"
#include "surface.h"

namespace {

constexpr const char* kGap = "  ";

// From the one that tells most.
std::vector<std::string> DetailsOf(const ListedEntry& Entry) {
    using Kind = ListedEntry::Kind;
    const bool bDated = Entry.Modified.has_value();
    const std::string date = bDated ? DateText(*Entry.Modified) : "";
    const std::string exactDate = bDated ? DateTextWithSeconds(*Entry.Modified) : "";
    if (Entry.What == Kind::Directory || Entry.What == Kind::Special) {
        return {exactDate, date};
    }
    const std::string gap = bDated ? kGap : "";
    return {SizeTextWithBytes(Entry.SizeBytes) + gap + exactDate,
            SizeText(Entry.SizeBytes) + gap + date, date};
}

} // namespace

char SignOf(const ListedEntry& Entry) {
    switch (Entry.What) {
    case ListedEntry::Kind::Directory:
        return Entry.bLink ? '~' : '/';
    case ListedEntry::Kind::Special:
        return Entry.bLink ? '!' : '=';
    case ListedEntry::Kind::File:
    case ListedEntry::Kind::Track:
        break;
    }
    return Entry.bLink ? '@' : ' ';
}

CellRole RoleOf(const ListedEntry& Entry) {
    if (Entry.What == ListedEntry::Kind::Special) {
        return CellRole::Special;
    }
    if (Entry.bLink) {
        return CellRole::Link;
    }
    if (Entry.IsDirectory()) {
        return CellRole::Directory;
    }
    return Entry.bExecutable ? CellRole::Executable : CellRole::Plain;
}

std::string EntrySizeText(const ListedEntry& Entry) {
    if (Entry.What == ListedEntry::Kind::Special) {
        return "";
    }
    return Entry.IsDirectory() ? "DIR" : SizeText(Entry.SizeBytes);
}

std::string EntryDetails(const ListedEntry& Entry, int Columns) {
    const char sign = SignOf(Entry);
    std::string name(sign == ' ' ? 0 : 1, sign);
    name += CleanForScreen(Entry.Name);
    for (const std::string& details : DetailsOf(Entry)) {
        const int room = Columns - DisplayWidth(details);
        if (DisplayWidth(name + kGap) <= room) {
            return FitToColumns(name, room) + details;
        }
    }
    return FitToColumns(ElideMiddle(name, Columns), Columns);
}

std::string ChosenText(const std::vector<std::filesystem::path>& Paths) {
    return Paths.size() == 1 ? Quoted(Paths.front().filename().native())
                             : NumberText(Paths.size()) + " entries";
}
