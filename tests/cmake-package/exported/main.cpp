#include <cstdio>

int nameCount();

int main()
{
    std::printf("%d\n", nameCount());
}
