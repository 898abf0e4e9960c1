// Draws the program's own pictures: hand cursor, icon and splash picture. The results are kept beside this file's
// folder; run it again after a change:  draw_pictures <folder resources/>

#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QList>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

#include <array>
#include <utility>

namespace {

constexpr int cursorSide = 32;
constexpr QPoint fingertip(12, 1);
constexpr std::array iconSides = {16, 22, 24, 32, 48, 64, 96, 128, 192, 256, 512};
constexpr std::array windowsIconSides = {16, 24, 32, 48, 64, 256};
constexpr QSize splashSize(480, 270);

const QColor deepGreen(0x14, 0x4D, 0x43);
const QColor green(0x2B, 0x8A, 0x74);
const QColor paper(0xFD, 0xFC, 0xF8);
const QColor rule(0xB9, 0xD6, 0xCC);
const QColor gold(0xE2, 0xA9, 0x3B);
const QColor darkGold(0xA8, 0x73, 0x14);

/// A file that little-endian values are written to.
class BinaryFile {
public:
    explicit BinaryFile(const QString& path) : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly))
            qFatal("Cannot write %s: %s", qPrintable(path), qPrintable(m_file.errorString()));
        m_stream.setByteOrder(QDataStream::LittleEndian);
    }

    void byte(int value) { m_stream << static_cast<quint8>(value); }
    void word(int value) { m_stream << static_cast<quint16>(value); }
    void doubleWord(qsizetype value) { m_stream << static_cast<quint32>(value); }
    void bytes(const QByteArray& value) { m_stream.writeRawData(value.constData(), static_cast<int>(value.size())); }

private:
    QFile m_file;
    QDataStream m_stream{&m_file};
};

/// A pointing hand on a grid of 32 units.
QPainterPath hand()
{
    QPainterPath outline;
    const auto part = [&outline](const QRectF& box, qreal radius) {
        QPainterPath rounded;
        rounded.addRoundedRect(box, radius, radius);
        outline = outline.united(rounded);
    };
    part({10.5, 1.5, 4.5, 18}, 2.2); // the pointing finger
    part({14.5, 9.5, 4.5, 10}, 2.2);
    part({18.5, 10.5, 4.5, 10}, 2.2);
    part({22.5, 12.5, 4, 10}, 2);
    part({10.5, 14, 16, 15.5}, 5); // the palm
    QPainterPath thumb;
    thumb.moveTo(11.5, 24.5);
    thumb.cubicTo(9, 22, 6.5, 18.5, 5, 16.5);
    thumb.cubicTo(3.8, 14.7, 6.2, 13.2, 7.8, 14.6);
    thumb.lineTo(11.5, 18.5);
    thumb.closeSubpath();
    return outline.united(thumb);
}

QImage handImage()
{
    QImage image(cursorSide, cursorSide, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, 1.4));
    painter.setBrush(Qt::white);
    painter.drawPath(hand());
    for (const qreal x : {14.8, 18.8, 22.6}) // between the bent fingers
        painter.drawLine(QLineF(x, 15, x, 19));
    return image;
}

/// A cursor file of one bitmap of 32 bits with its transparency mask, rows from the bottom up.
void writeCursor(const QString& path, const QImage& image, QPoint hotSpot)
{
    const int side = image.width();
    const int pixelBytes = side * side * 4;
    const int maskBytes = side * side / 8; // a row of 32 pixels fills whole groups of 32 bits
    BinaryFile file(path);
    for (const int value : {0, 2, 1}) // reserved, cursor, one picture
        file.word(value);
    for (const int value : {side, side, 0, 0})
        file.byte(value);
    file.word(hotSpot.x());
    file.word(hotSpot.y());
    file.doubleWord(40 + pixelBytes + maskBytes);
    file.doubleWord(6 + 16);

    file.doubleWord(40);
    file.doubleWord(side);
    file.doubleWord(qsizetype{2} * side); // the mask's rows count
    file.word(1);
    file.word(32);
    for (const int value : {0, pixelBytes + maskBytes, 0, 0, 0, 0})
        file.doubleWord(value);
    for (int y = side - 1; y >= 0; --y)
        for (int x = 0; x < side; ++x)
            file.doubleWord(image.pixel(x, y));
    for (int y = side - 1; y >= 0; --y)
        for (int x = 0; x < side; x += 8) {
            int mask = 0;
            for (int bit = 0; bit < 8; ++bit)
                mask = mask * 2 + (qAlpha(image.pixel(x + bit, y)) == 0 ? 1 : 0);
            file.byte(mask);
        }
}

/// A part of the icon: a rectangle on a grid of 64 units. Corners rounded by half its side make it a circle.
struct IconShape {
    QRectF box;
    qreal cornerRadius;
    QColor fill; ///< transparent: only the rim is drawn
    QColor rim;  ///< transparent: no rim
    qreal rimWidth;
};

constexpr int iconGrid = 64;
const IconShape iconGround{{2, 2, 60, 60}, 13, green, Qt::transparent, 0}; ///< its fill darkens downwards

/// What stands on the green ground, from the bottom up: a sheet with its heading and its lines, and a coin.
QList<IconShape> iconShapes()
{
    QList<IconShape> shapes = {{{13, 11, 32, 42}, 3, paper, Qt::transparent, 0},
                               {{18, 17, 22, 5}, 0, green, Qt::transparent, 0}};
    for (const qreal y : {26.0, 32.0, 38.0, 44.0})
        shapes << IconShape{{18, y, 12, 3}, 0, rule, Qt::transparent, 0}
               << IconShape{{33, y, 7, 3}, 0, rule, Qt::transparent, 0};
    return shapes << IconShape{{33, 33, 22, 22}, 11, gold, deepGreen, 2}
                  << IconShape{{37, 37, 14, 14}, 7, Qt::transparent, darkGold, 1.6};
}

void drawIcon(QPainter& painter)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const auto draw = [&painter](const IconShape& shape, const QBrush& fill) {
        painter.setBrush(fill);
        painter.setPen(shape.rimWidth > 0 ? QPen(shape.rim, shape.rimWidth) : QPen(Qt::NoPen));
        painter.drawRoundedRect(shape.box, shape.cornerRadius, shape.cornerRadius);
    };
    QLinearGradient ground(0, 0, 0, iconGrid);
    ground.setColorAt(0, green);
    ground.setColorAt(1, deepGreen);
    draw(iconGround, ground);
    for (const IconShape& shape : iconShapes())
        draw(shape, shape.fill);
}

QString svgRectangle(const IconShape& shape, const QString& fill)
{
    QString text = QStringLiteral(R"(  <rect x="%1" y="%2" width="%3" height="%4" rx="%5" fill="%6")")
                       .arg(shape.box.x())
                       .arg(shape.box.y())
                       .arg(shape.box.width())
                       .arg(shape.box.height())
                       .arg(shape.cornerRadius)
                       .arg(fill);
    if (shape.rimWidth > 0)
        text += QStringLiteral(R"( stroke="%1" stroke-width="%2")").arg(shape.rim.name()).arg(shape.rimWidth);
    return text + QStringLiteral("/>\n");
}

/// The icon for every size (Scalable Vector Graphics 1.1, W3C).
void writeScalableIcon(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write %s: %s", qPrintable(path), qPrintable(file.errorString()));
    QTextStream svg(&file);
    svg << QStringLiteral(
               "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%1\" viewBox=\"0 0 %1 %1\">\n"
               "  <linearGradient id=\"ground\" gradientUnits=\"userSpaceOnUse\" x1=\"0\" y1=\"0\" x2=\"0\" "
               "y2=\"%1\">\n"
               "    <stop offset=\"0\" stop-color=\"%2\"/>\n"
               "    <stop offset=\"1\" stop-color=\"%3\"/>\n"
               "  </linearGradient>\n")
               .arg(iconGrid)
               .arg(green.name(), deepGreen.name())
        << svgRectangle(iconGround, QStringLiteral("url(#ground)"));
    for (const IconShape& shape : iconShapes())
        svg << svgRectangle(shape, shape.fill.alpha() == 0 ? QStringLiteral("none") : shape.fill.name());
    svg << "</svg>\n";
}

QImage iconImage(int side)
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.scale(qreal(side) / iconGrid, qreal(side) / iconGrid);
    drawIcon(painter);
    return image;
}

QByteArray asPng(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png");
    return bytes;
}

/// All sizes in one icon file, each as a PNG file of its own.
void writeWindowsIcon(const QString& path)
{
    BinaryFile file(path);
    for (const int value : {0, 1, static_cast<int>(windowsIconSides.size())}) // reserved, icon, pictures
        file.word(value);
    QByteArray pictures;
    for (const int side : windowsIconSides) {
        const QByteArray png = asPng(iconImage(side));
        for (const int value : {side % 256, side % 256, 0, 0}) // 0 says 256
            file.byte(value);
        file.word(1);
        file.word(32);
        file.doubleWord(png.size());
        file.doubleWord(static_cast<qsizetype>(6 + 16 * windowsIconSides.size()) + pictures.size());
        pictures += png;
    }
    file.bytes(pictures);
}

QFont arial(int pixels, QFont::Weight weight)
{
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

QImage splashImage()
{
    QImage image(splashSize, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, 0, splashSize.height());
    ground.setColorAt(0, paper);
    ground.setColorAt(1, rule);
    painter.fillRect(image.rect(), ground);
    painter.drawImage(QRect(32, 67, 128, 128), iconImage(128));
    painter.setPen(deepGreen);
    painter.setFont(arial(46, QFont::Bold));
    painter.drawText(QPoint(184, 132), QStringLiteral("Wagemill"));
    painter.setFont(arial(17, QFont::Normal));
    painter.drawText(QPoint(186, 166), QStringLiteral("Payroll figures in,"));
    painter.drawText(QPoint(186, 190), QStringLiteral("a finished payroll workbook out."));
    return image;
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    if (argc != 2)
        qFatal("Usage: draw_pictures <folder>");
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    folder.mkpath(QStringLiteral("Splash"));
    folder.mkpath(QStringLiteral("icon"));
    writeCursor(folder.filePath(QStringLiteral("HAND-M.CUR")), handImage(), fingertip);
    for (const int side : iconSides)
        iconImage(side).save(folder.filePath(QStringLiteral("icon/wagemill-%1.png").arg(side)));
    writeScalableIcon(folder.filePath(QStringLiteral("icon/wagemill.svg")));
    writeWindowsIcon(folder.filePath(QStringLiteral("icon/wagemill.ico")));
    splashImage().save(folder.filePath(QStringLiteral("Splash/wagemill.png")));
    return 0;
}
