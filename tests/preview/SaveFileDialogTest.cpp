#include "preview/SaveFileDialog.h"

#include "tests/support/TemporaryFolder.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

namespace wagemill {

namespace {

namespace fs = std::filesystem;

/// What the dialog returns when `user` acts on it.
fs::path ask(SaveFileDialog& asked, const std::function<void(QFileDialog&, QLineEdit&)>& user)
{
    QWidget owner;
    QTimer::singleShot(0, &owner, [&owner, &user] {
        auto* dialog = owner.findChild<QFileDialog*>(QStringLiteral("CommonDialog1"));
        ASSERT_NE(dialog, nullptr);
        user(*dialog, *dialog->findChild<QLineEdit*>());
        if (dialog->isVisible())
            dialog->reject();
    });
    return asked.showSave({.fileName = "", .title = "Save File", .filter = "Excel Files (*.xls)|*.xls|"}, owner);
}

fs::path ask(const std::function<void(QFileDialog&, QLineEdit&)>& user)
{
    PlatformSaveFileDialog asked;
    return ask(asked, user);
}

void type(QLineEdit& name, const fs::path& text)
{
    name.setText(QString::fromStdString(text.string()));
    QTest::keyClick(&name, Qt::Key_Return);
}

} // namespace

TEST(SaveFileDialog, StartsWithAnEmptyNameInDocumentsAndReturnsTheFullPath)
{
    const test::TemporaryFolder home;
    const test::ScopedEnvironment homeFolder("HOME", home.path().string());
    const test::ScopedEnvironment configuration("XDG_CONFIG_HOME", std::nullopt);
    for (const bool hasDocuments : {false, true}) {
        const fs::path expected = hasDocuments ? home / "Documents" : home.path();
        if (hasDocuments)
            fs::create_directory(expected);
        const fs::path answer = ask([&](QFileDialog& dialog, QLineEdit& name) {
            EXPECT_EQ(dialog.windowTitle(), "Save File");
            EXPECT_EQ(dialog.nameFilters(), QStringList{"Excel Files (*.xls)"});
            EXPECT_EQ(dialog.directory().path().toStdString(), expected.string());
            EXPECT_EQ(name.text(), "");
            type(name, "March");
        });
        EXPECT_EQ(answer, expected / "March") << "no extension is added";
    }
}

TEST(SaveFileDialog, StartsWhereTheLastSaveWent)
{
    const test::TemporaryFolder home;
    const test::ScopedEnvironment homeFolder("HOME", home.path().string());
    const test::ScopedEnvironment configuration("XDG_CONFIG_HOME", std::nullopt);
    fs::create_directory(home / "Documents");
    fs::create_directory(home / "Payroll");
    PlatformSaveFileDialog asked;
    const auto startFolder = [&](const fs::path& chosen) {
        std::string start;
        ask(asked, [&](QFileDialog& dialog, QLineEdit& name) {
            start = dialog.directory().path().toStdString();
            EXPECT_EQ(name.text(), "");
            if (!chosen.empty())
                type(name, chosen);
        });
        return start;
    };
    EXPECT_EQ(startFolder(""), (home / "Documents").string());
    EXPECT_EQ(startFolder(home / "Payroll" / "March.xls"), (home / "Documents").string()) << "cancelled before";
    EXPECT_EQ(startFolder("April.xls"), (home / "Payroll").string());
    EXPECT_EQ(startFolder(""), (home / "Payroll").string());
    fs::remove_all(home / "Payroll");
    EXPECT_EQ(startFolder(""), (home / "Documents").string()) << "it is gone";
}

TEST(SaveFileDialog, ReturnsAnExistingFileWithoutAQuestionAndNothingWhenCancelled)
{
    const test::TemporaryFolder folder;
    std::ofstream(folder / "old.xls") << "figures";
    EXPECT_EQ(ask([&](QFileDialog&, QLineEdit& name) { type(name, folder / "old.xls"); }), folder / "old.xls");
    EXPECT_EQ(ask([](QFileDialog& dialog, QLineEdit&) { QTest::keyClick(&dialog, Qt::Key_Escape); }), fs::path());
}

TEST(NameFilters, ReadPairsOfDescriptionAndPattern)
{
    EXPECT_EQ(nameFilters("Excel Files (*.xls)|*.xls|"), QStringList{"Excel Files (*.xls)"});
    EXPECT_EQ(nameFilters("Sheets|*.xls;*.xlt|All|*"), (QStringList{"Sheets (*.xls *.xlt)", "All (*)"}));
    EXPECT_EQ(nameFilters(""), QStringList{});
}

} // namespace wagemill
