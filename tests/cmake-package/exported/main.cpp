#include <cstdio>

int nameCount();
int canDraw(); // without a device

int main()
{
    std::printf("%d %d\n", nameCount(), canDraw());
}
