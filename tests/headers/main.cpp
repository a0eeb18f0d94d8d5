// A program that does nothing: the tests borrow the headers that were compiled for it.
int main()
{
    return 0;
}
