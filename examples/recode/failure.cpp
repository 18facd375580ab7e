#include "failure.h"

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t caughtSignal = 0;

void Catch(int signal) {
    caughtSignal = signal;
}

}  // namespace

Failure SystemFailure(const char* what) {
    Failure failure;
    failure.text.FormatMsg(static_cast<std::uint32_t>(errno), "%s", what);
    return failure;
}

void CatchSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) {
            continue;  // as behind nohup
        }
        action = {};
        action.sa_handler = Catch;  // without SA_RESTART: a read that waits has to end
        sigaction(signal, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);  // a file too large is then a write that fails
}

void CheckInterrupt() {
    if (caughtSignal != 0) {
        throw Interrupted{caughtSignal};
    }
}
