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
fs::path ask(const SaveFileDialog& asked, const std::function<void(QFileDialog&, QLineEdit&)>& user)
{
    QWidget owner;
    QTimer::singleShot(0, &owner, [&owner, &user] {
        auto* dialog = owner.findChild<QFileDialog*>(QStringLiteral("CommonDialog1"));
        ASSERT_NE(dialog, nullptr);
        user(*dialog, *dialog->findChild<QLineEdit*>());
        if (dialog->isVisible())
            dialog->reject();
    });
    return asked("Save File", "Excel Files (*.xls)|*.xls|", owner);
}

void type(QLineEdit& name, const fs::path& text)
{
    name.setText(QString::fromStdString(text.string()));
    QTest::keyClick(&name, Qt::Key_Return);
}

} // namespace

TEST(SaveFileDialog, StartsWithAnEmptyNameWhereTheLastSaveWentAndReturnsTheFullPath)
{
    const test::TemporaryFolder home;
    const test::ScopedEnvironment homeFolder("HOME", home.path().string());
    const test::ScopedEnvironment configuration("XDG_CONFIG_HOME", std::nullopt);
    const fs::path documents = home / "Documents";
    const fs::path payroll = home / "Payroll";
    const SaveFileDialog asked = platformSaveFileDialog();
    const auto expect = [&](const fs::path& start, const fs::path& typed, const fs::path& answer) {
        const fs::path chosen = ask(asked, [&](QFileDialog& dialog, QLineEdit& name) {
            EXPECT_EQ(dialog.windowTitle(), "Save File");
            EXPECT_EQ(dialog.nameFilters(), QStringList{"Excel Files (*.xls)"});
            EXPECT_EQ(dialog.directory().path().toStdString(), start.string());
            EXPECT_EQ(name.text(), "");
            if (!typed.empty())
                type(name, typed);
            else
                QTest::keyClick(&dialog, Qt::Key_Escape);
        });
        EXPECT_EQ(chosen, answer);
    };
    expect(home.path(), "", "");
    fs::create_directory(documents);
    fs::create_directory(payroll);
    std::ofstream(payroll / "April.xls") << "data";
    expect(documents, "March", documents / "March"); // no extension is added
    expect(documents, payroll / "March.xls", payroll / "March.xls");
    expect(payroll, "April.xls", payroll / "April.xls"); // is there already: without a question
    fs::remove_all(payroll);
    expect(documents, "", "");
}

} // namespace wagemill
