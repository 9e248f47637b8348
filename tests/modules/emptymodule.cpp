/// A module without classes. It can be unloaded.

extern "C" int GetNumberOfEmptyModule();

int GetNumberOfEmptyModule()
{
    return 1;
}
