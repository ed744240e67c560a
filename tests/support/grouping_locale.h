// A global locale that writes numbers as German does: 1.048.576,5.

#pragma once

#include <locale>
#include <string>

// Installs the locale for its lifetime.
class GroupingLocale {
public:
    GroupingLocale() : Previous(std::locale::global(std::locale(std::locale(), new Numbers))) {}
    GroupingLocale(const GroupingLocale&) = delete;
    GroupingLocale& operator=(const GroupingLocale&) = delete;
    ~GroupingLocale() { std::locale::global(Previous); }

private:
    class Numbers : public std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale Previous;
};
