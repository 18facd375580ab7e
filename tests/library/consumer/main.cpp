#include <Kelm.h>

#include <cstdio>

int main() {
    Kelm text = Kelm::FromFormat("%d %s", 7, "cats");
    int tokens = 0;
    for (Kelm::Token token(text); token; ++token) {
        ++tokens;
    }
    WString wide(text);
    bool right = text == "7 cats" && tokens == 2 && wide.ToKelm() == text;
    std::puts(right ? text.constBuffer() : "the installed library does not work");
    return right ? 0 : 1;
}
