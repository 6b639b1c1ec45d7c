// What the stand-in for the client library needs from a library of its own folder.
extern "C" __declspec(dllexport) long omniNeeded() { return 0; }
