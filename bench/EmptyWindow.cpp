// empty_window WIDTH HEIGHT: a Qt program with one empty window of that size, to hold start and memory against.

#include <QApplication>
#include <QWidget>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("Usage: empty_window WIDTH HEIGHT\n", stderr);
        return 2;
    }
    QWidget window;
    window.setWindowTitle(QStringLiteral("Empty"));
    window.setFixedSize(QString::fromLocal8Bit(argv[1]).toInt(), QString::fromLocal8Bit(argv[2]).toInt());
    window.show();
    return QApplication::exec();
}
