// The program's window with Qt's own widgets alone, and nothing behind it.
#include "ui_MinimalWindow.h"

#include <QApplication>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    Ui::MainWindow form;
    form.setupUi(&window);
    window.setCentralWidget(form.view);
    window.show();
    return QApplication::exec();
}
