#include MANIFEST

int library();

int main()
{
    return library();
}
