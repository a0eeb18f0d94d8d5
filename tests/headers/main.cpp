// A program that does nothing. The tests use its precompiled headers.
int main()
{
    return 0;
}
