/*
 * broken.cpp: a program with one mistake of memory, by its name. run holds
 * valgrind against it: a checker that finds nothing in here would find nothing
 * anywhere.
 */
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

/** Bytes of each block; a size that is no multiple of a word. */
constexpr std::size_t SIZE = 13;

/** Where a block is kept in sight of the compiler no longer. */
char *volatile kept = nullptr;

/** A block with `written` of its bytes set, from which only `kept` leads on. */
void take(std::size_t written)
{
    kept = static_cast<char *>(std::malloc(SIZE));
    if (kept != nullptr) {
        std::memset(kept, 'x', written);
    }
}

void give_back()
{
    std::free(kept);
}

/** The end of a program that read `byte`, which may not be its own. */
int seen(const volatile char *byte)
{
    return *byte == 'x' ? EXIT_SUCCESS : EXIT_FAILURE;
}

int leak()
{
    take(SIZE);
    kept = nullptr;
    return EXIT_SUCCESS;
}

int reachable()
{
    take(SIZE);
    return EXIT_SUCCESS;
}

int freed()
{
    take(SIZE);
    give_back();
    return seen(kept);
}

int overrun()
{
    take(SIZE);
    const int end = seen(kept + SIZE);
    give_back();
    return end;
}

int unwritten()
{
    take(SIZE - 1);
    const int end = seen(kept + SIZE - 1);
    give_back();
    return end;
}

int none()
{
    take(SIZE);
    const int end = seen(kept + SIZE - 1);
    give_back();
    return end;
}

struct Mistake {
    std::string_view name;
    int (*make)();
};

constexpr Mistake MISTAKES[] = {{"none", none},   {"leak", leak},       {"reachable", reachable},
                                {"freed", freed}, {"overrun", overrun}, {"unwritten", unwritten}};

} // namespace

/** Makes the mistake that the only argument names; 2 when there is none such. */
int main(int argc, char **argv)
{
    for (const Mistake &known : MISTAKES) {
        if (argc == 2 && known.name == argv[1]) {
            return known.make();
        }
    }
    return 2;
}
