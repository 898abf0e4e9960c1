#include "app/look/Look.h"

#include "app/base/Messages.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QWidget>

#include <stdexcept>

namespace wagemill {

namespace {

constexpr qint64 maxSkin = 1 << 20; // bytes

/// Qt ignores what it cannot read, without a word to the user. A style sheet is any number of
/// "selector { name: value; name: value }", with comments anywhere.
bool isStyleSheet(QString text)
{
    static const QRegularExpression comment(QStringLiteral(R"(/\*.*?\*/)"),
                                            QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression rules(
        QStringLiteral(R"(\A\s*+(?>[^{};]++\{\s*+(?>[\w-]++\s*+:[^{};]++(?>;\s*+)*+)*+\}\s*+)*+\z)"));
    return rules.match(text.remove(comment)).hasMatch();
}

[[noreturn]] void refuseSkin(const std::filesystem::path& file, const std::string& reason)
{
    throw std::runtime_error("Cannot use the skin file \"" + file.string() + "\": " + withoutFullStop(reason) + ".");
}

class StyleSheetSkin : public SkinningControl {
public:
    void loadSkin(const std::filesystem::path& skinFile) override
    {
        if (std::error_code error; !std::filesystem::is_regular_file(skinFile, error))
            refuseSkin(skinFile, "it is not a plain file"); // opening a pipe would wait for somebody to write to it
        QFile file(skinFile);
        if (!file.open(QIODevice::ReadOnly))
            refuseSkin(skinFile, file.errorString().toStdString());
        const QByteArray bytes = file.read(maxSkin + 1);
        if (bytes.size() > maxSkin)
            refuseSkin(skinFile, "it is larger than 1 MiB");
        QStringDecoder decoder(QStringDecoder::Utf8);
        const QString text = decoder(bytes);
        if (decoder.hasError() || text.contains(QChar(0)))
            refuseSkin(skinFile, "it is not text");
        if (!isStyleSheet(text))
            refuseSkin(skinFile, "it is not a style sheet");
        m_styleSheet = text;
    }

    std::int32_t options() const override { return m_options; }
    void setOptions(std::int32_t options) override { m_options = options; }
    /// A style sheet covers what is created later inside its window by itself, so neither flag changes anything.
    void setFlag(int /*dispatchIdentifier*/, bool /*value*/) override {}
    void applyWindow(std::uintptr_t windowHandle) override
    {
        QWidget* window = QWidget::find(windowHandle);
        if (window != nullptr && (m_options & 1) != 0)
            window->setStyleSheet(m_styleSheet);
    }

private:
    QString m_styleSheet;
    std::int32_t m_options = 0;
};

} // namespace

std::unique_ptr<SkinningControl> styleSheetSkin()
{
    return std::make_unique<StyleSheetSkin>();
}

} // namespace wagemill
