// A loadable library without the engine's operations.
extern "C" int notTheSkinEngine()
{
    return 0;
}
