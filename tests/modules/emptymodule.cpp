/// A module without classes, which may be unloaded.

extern "C" int GetNumberOfEmptyModule();

int GetNumberOfEmptyModule()
{
    return 1;
}
