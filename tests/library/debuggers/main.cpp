#include <Kelm.h>

#include <cstring>
#include <vector>

namespace {

struct Row {
    Kelm name;
    WString wide;
};

void look([[maybe_unused]] const Kelm& text) {}

}  // namespace

int main() {
    Row row{Kelm("a\0\"\xC3\xA4\xFF", 6), WString(u"\u20ACx")};
    const Kelm shared("two hold this");
    const std::vector<Kelm> list{shared};
    Kelm locked("kept"), nothing, longer(Kelm::FromRepeat('x', 1000)), damaged("broken");
    locked.LockBuffer();
    Kelm::Token token(shared);
    ++token;
    const std::int32_t nHeader[] = {7, 9, 3};
    std::memcpy(damaged.LockBuffer() - sizeof nHeader, nHeader, sizeof nHeader);
    look(row.name);
    const std::int32_t nRight[] = {1, 6, 6};
    std::memcpy(const_cast<char*>(damaged.constBuffer()) - sizeof nRight, nRight, sizeof nRight);
    return nothing.GetLength();
}
