// Values are there before main, at exit, in the destructors that run last, and for a thread that
// goes on while its process ends: the library has nothing that is built up or torn down.

#include <Kelm.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

namespace {

void use() {
    Kelm text = Kelm::FromFormat("%d %s", 7, "cats and \xC3\xA4");
    const WString wide = WString::FromCodePage(text, 932);
    text.MakeUpper();
    if (text.Find("CATS") != 2 || wide.ToKelm(932).NCFind("CATS") != 2 || Kelm().GetLength() != 0) {
        std::abort();
    }
}

struct User {
    User() { use(); }
    ~User() { use(); }
};

// In front of everything that has no number, and so destroyed behind it.
__attribute__((init_priority(101))) const User first;

}  // namespace

int main() {
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            static const User late;
            std::atexit(use);
            std::thread([] {
                for (;;) {
                    use();
                }
            }).detach();
            use();
            std::exit(0);
        }
        int status = 1;
        if (waitpid(child, &status, 0) != child || status != 0) {
            return 1;
        }
    }
    return 0;
}
