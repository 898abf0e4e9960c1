#include "bench/PayrollJob.h"
#include "bench/Repeated.h"

#include "app/base/Files.h"
#include "drawing/DrawingFile.h"
#include "tests/support/TemporaryFolder.h"
#include "workbook/engine/picture/SheetPicture.h"

#include <QImage>

#include <cmath>
#include <cstring>

namespace {

using namespace wagemill;
using namespace wagemill::bench;

void employees(benchmark::internal::Benchmark* benchmark)
{
    repeated(benchmark->Arg(1)->Arg(25));
}

void storeAnew(const std::vector<std::byte>& bytes, const std::filesystem::path& file)
{
    std::filesystem::remove(file);
    writeBytesToFile(bytes, file);
}

drawing::Drawing pictureOf(const engine::Book& book)
{
    const engine::Sheet& stubs = *book.sheets[book.activeSheet];
    return engine::sheetPicture(book, stubs, stubs.usedRange().value(), {});
}

/// The picture of the used range at scale 1, from the cells to the stored drawing.
void picture(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    const engine::Book book = filledBook(static_cast<int>(state.range(0)));
    for (auto _ : state)
        storeAnew(drawingFile(pictureOf(book)), folder / "picture.bmp");
}
BENCHMARK(picture)->Apply(employees)->Arg(400);

/// What the picture is held against: a bitmap of its size in one colour, filled and stored.
void pictureOfOneColour(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    const drawing::Drawing drawn = pictureOf(filledBook(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        QImage image(static_cast<int>(std::ceil(drawn.width)), static_cast<int>(std::ceil(drawn.height)),
                     QImage::Format_BGR888);
        image.fill(Qt::white);
        std::vector<std::byte> bytes(static_cast<std::size_t>(image.sizeInBytes()));
        std::memcpy(bytes.data(), image.constBits(), bytes.size());
        storeAnew(bytes, folder / "picture.bmp");
    }
    state.counters["width"] = drawn.width;
    state.counters["height"] = drawn.height;
}
BENCHMARK(pictureOfOneColour)->Apply(employees);

} // namespace
