// What a Qt Core program costs that does nothing.
#include <QCoreApplication>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
}
