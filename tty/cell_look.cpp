#include "cell_look.h"

CellLook ColoredLook(CellRole Role) {
    using enum CellColor;
    switch (Role) {
    case CellRole::Plain:
    case CellRole::Frame:
    case CellRole::Status:
        return {};
    case CellRole::Directory:
        return {.Text = White, .bBold = true};
    case CellRole::Executable:
        return {.Text = Green, .bBold = true};
    case CellRole::Link:
        return {.Text = Cyan, .bBold = true};
    case CellRole::Special:
        return {.Text = Yellow};
    case CellRole::Marked:
        return {.Text = Magenta, .bBold = true};
    case CellRole::Cursor:
    case CellRole::KeyLabel:
        return {.Text = Black, .Ground = Cyan};
    case CellRole::MarkedCursor:
        return {.Text = White, .Ground = Magenta, .bBold = true};
    case CellRole::QuietCursor:
        return {.bUnderline = true};
    case CellRole::Title:
    case CellRole::KeyNumber:
        return {.bBold = true};
    case CellRole::Dialog:
    case CellRole::Button:
        return {.Text = Black, .Ground = White};
    case CellRole::DialogTitle:
    case CellRole::BarDone:
    case CellRole::BarLeft:
        return {.Text = Blue, .Ground = White};
    case CellRole::ButtonFocus:
        return {.Text = White, .Ground = Blue, .bBold = true};
    case CellRole::Hotkey:
        return {.Text = Red, .Ground = White};
    case CellRole::Input:
        return {.Text = Black, .Ground = Cyan};
    case CellRole::Warning:
        return {.Text = White, .Ground = Red, .bBold = true};
    }
    return {};
}

CellLook PlainLook(CellRole Role) {
    switch (Role) {
    case CellRole::Directory:
    case CellRole::Marked:
    case CellRole::Title:
    case CellRole::DialogTitle:
    case CellRole::Hotkey:
    case CellRole::Warning:
    case CellRole::KeyNumber:
        return {.bBold = true};
    case CellRole::Cursor:
    case CellRole::ButtonFocus:
    case CellRole::KeyLabel:
        return {.bReverse = true};
    case CellRole::MarkedCursor:
        return {.bBold = true, .bReverse = true};
    case CellRole::QuietCursor:
    case CellRole::Input:
        return {.bUnderline = true};
    case CellRole::Plain:
    case CellRole::Executable:
    case CellRole::Link:
    case CellRole::Special:
    case CellRole::Frame:
    case CellRole::Dialog:
    case CellRole::Button:
    case CellRole::BarDone:
    case CellRole::BarLeft:
    case CellRole::Status:
        return {};
    }
    return {};
}
