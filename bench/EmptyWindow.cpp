// empty_window WIDTH HEIGHT [TEXT]: a Qt program with one empty window of that size, or with one text in it, to hold
// start and memory against.

#include <QApplication>
#include <QLabel>

#include <cstdio>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (argc < 3 || argc > 4) {
        std::fputs("Usage: empty_window WIDTH HEIGHT [TEXT]\n", stderr);
        return 2;
    }
    QLabel window;
    if (argc == 4)
        window.setText(QString::fromLocal8Bit(argv[3]));
    window.setWindowTitle(QStringLiteral("Empty"));
    window.setFixedSize(QString::fromLocal8Bit(argv[1]).toInt(), QString::fromLocal8Bit(argv[2]).toInt());
    window.show();
    return QApplication::exec();
}
