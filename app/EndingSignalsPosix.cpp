#include "app/EndingSignals.h"

#include "app/base/Files.h"
#include "app/base/Messages.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QWidget>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace wagemill {

namespace {

/// A pipe from the signal handler, which may do next to nothing, to the event loop.
volatile std::sig_atomic_t writingEnd = -1;

void noteSignal(int /*signal*/)
{
    const int errorBefore = errno;
    const char awake = 0;
    static_cast<void>(::write(writingEnd, &awake, 1) == 1); // a full pipe wakes the loop as well
    errno = errorBefore;
}

/// The pipe keeps its byte until nothing else is under way: what lets events run, and what a dialog belongs to (a
/// build, perhaps), ends before the windows are closed, which delete their files.
void endAsTheUserWould(QSocketNotifier& notifier)
{
    if (isProcessingWindowEvents())
        return;
    setMessages(nullptr); // nobody is there to answer
    if (QWidget* const dialog = QApplication::activeModalWidget()) {
        dialog->close();
        return;
    }
    notifier.setEnabled(false);
    QApplication::closeAllWindows();
    endProgram(); // where no window was there to close
}

} // namespace

void endProgramOnSignals()
{
    std::array<int, 2> ends = {};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // then a signal ends the program at once, and the next start removes the folder
    writingEnd = ends[1];
    auto* const notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [notifier] { endAsTheUserWould(*notifier); });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action = {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue; // started so as to outlive its terminal
        action.sa_handler = noteSignal;
        action.sa_flags = SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
}

} // namespace wagemill
