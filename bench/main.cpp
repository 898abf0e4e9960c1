#include "app/base/Messages.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

/// Nothing is measured where a message would have to be answered.
class FailOnMessages : public wagemill::Messages {
public:
    FailOnMessages() { wagemill::setMessages(this); }
    wagemill::MessageAnswer show(const wagemill::Message& message) override { qFatal("%s", message.text.c_str()); }
};

} // namespace

int main(int argc, char* argv[])
{
    benchmark::Initialize(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const FailOnMessages messages;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
