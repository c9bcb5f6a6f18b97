// A loadable library without the engine's operations.
extern "C" int NotTheSkinEngine()
{
    return 0;
}
