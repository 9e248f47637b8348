/// A module without classes, which can be unloaded.

extern "C" int GetNumberOfEmptyModule();

int GetNumberOfEmptyModule()
{
    return 1;
}
