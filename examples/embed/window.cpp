// Opens a window for transfers, and starts one for each pair: window [SOURCE DIRECTORY]...

#include "transfer_window.h"

#include <QApplication>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    TransferWindow window;
    window.show();
    for (int index = 1; index + 1 < argc; index += 2) {
        window.Start({argv[index]}, argv[index + 1], false);
    }
    return QApplication::exec();
}
