#include "preview/SaveFileDialog.h"

#include "tests/support/TemporaryFolder.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <fstream>

using namespace wagemill;
using namespace wagemill::test;
namespace fs = std::filesystem;

TEST(SaveFileDialog, StartsWithAnEmptyNameWhereTheLastSaveWentAndReturnsTheFullPath)
{
    const TemporaryFolder home;
    const ScopedEnvironment homeFolder("HOME", home.path().string());
    const ScopedEnvironment configuration("XDG_CONFIG_HOME", std::nullopt);
    const fs::path documents = home / "Documents";
    const fs::path payroll = home / "Payroll";
    const SaveFileDialog ask = platformSaveFileDialog();
    const auto expect = [&](const fs::path& start, const fs::path& typed, const fs::path& answer) {
        QWidget owner;
        QTimer::singleShot(0, &owner, [&] {
            auto* const dialog = owner.findChild<QFileDialog*>("CommonDialog1");
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(dialog->windowTitle(), "Save File");
            EXPECT_EQ(dialog->nameFilters(), QStringList{"Excel Files (*.xls)"});
            EXPECT_EQ(dialog->directory().path().toStdString(), start.string());
            auto* const name = dialog->findChild<QLineEdit*>();
            EXPECT_EQ(name->text(), "");
            name->setText(QString::fromStdString(typed.string()));
            QTest::keyClick(name, typed.empty() ? Qt::Key_Escape : Qt::Key_Return);
            if (dialog->isVisible())
                dialog->reject();
        });
        EXPECT_EQ(ask("Save File", "Excel Files (*.xls)|*.xls|", owner), answer);
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
