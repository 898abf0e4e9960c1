#include "app/look/StyleSheetSkin.h"

#include <QFile>
#include <QStringDecoder>
#include <QWidget>

#include <stdexcept>

namespace wagemill {

namespace {

constexpr qint64 largestSkin = 1 << 20; // bytes

[[noreturn]] void refuseSkin(const std::filesystem::path& file, const std::string& reason)
{
    throw std::runtime_error("Cannot use the skin file \"" + file.string() + "\": " + reason + ".");
}

} // namespace

std::unique_ptr<SkinningControl> createSkinningControl()
{
    return std::make_unique<StyleSheetSkin>();
}

void StyleSheetSkin::loadSkin(const std::filesystem::path& skinFile, std::string_view /*variant*/)
{
    QFile file(skinFile);
    if (!file.open(QIODevice::ReadOnly))
        refuseSkin(skinFile, file.errorString().toStdString());
    const QByteArray bytes = file.read(largestSkin + 1);
    if (bytes.size() > largestSkin)
        refuseSkin(skinFile, "it is larger than 1 MiB");
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(bytes);
    if (decoder.hasError() || text.contains(QChar(0)))
        refuseSkin(skinFile, "it is no text");
    m_styleSheet = text;
}

void StyleSheetSkin::applyWindow(std::uintptr_t windowHandle)
{
    QWidget* window = QWidget::find(windowHandle);
    if (window != nullptr && (m_options & 1) != 0)
        window->setStyleSheet(m_styleSheet);
}

} // namespace wagemill
