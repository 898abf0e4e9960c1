#include "bench/PayrollJob.h"
#include "bench/Repeated.h"

#include "app/base/Files.h"
#include "resources/CustomResource.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace wagemill;
using namespace wagemill::bench;

/// 2730 is the most that 16-bit row numbers allow.
void employees(benchmark::internal::Benchmark* benchmark)
{
    repeated(benchmark->Arg(1)->Arg(25)->Arg(400)->Arg(2730));
}

int employeesOf(const benchmark::State& state)
{
    return static_cast<int>(state.range(0));
}

void engineWhole(benchmark::State& state)
{
    const test::TemporaryFolder folder;
    writeBytesToFile(customResource(payrollTemplateResource), folder / "template.xlt");
    const PayrollData data = payroll(employeesOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(engineJob(data, folder.path()));
}
BENCHMARK(engineWhole)->Apply(employees);

void engineFill(benchmark::State& state)
{
    const PayrollData data = payroll(employeesOf(state));
    for (auto _ : state) {
        engine::Book book = openTemplate();
        fill(book, data);
        benchmark::DoNotOptimize(book);
    }
}
BENCHMARK(engineFill)->Apply(employees);

void engineRecalculate(benchmark::State& state)
{
    engine::Book book = filledBook(employeesOf(state));
    for (auto _ : state)
        recalculate(book);
}
BENCHMARK(engineRecalculate)->Apply(employees);

void engineSave(benchmark::State& state)
{
    const engine::Book book = filledBook(employeesOf(state));
    for (auto _ : state)
        benchmark::DoNotOptimize(save(book));
}
BENCHMARK(engineSave)->Apply(employees);

void engineReopen(benchmark::State& state)
{
    const std::vector<std::byte> bytes = save(filledBook(employeesOf(state)));
    for (auto _ : state)
        benchmark::DoNotOptimize(reopen(bytes));
}
BENCHMARK(engineReopen)->Apply(employees);

} // namespace
