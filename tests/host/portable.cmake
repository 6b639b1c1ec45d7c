# The sources of unit/ that need no Windows and test no platform class.
set(PORTABLE_TESTS
    TestConsoleLogHandler.cpp
    TestIPCMessage.cpp
    TestLogLevel.cpp
    TestLogRecord.cpp
    TestLogger.cpp
    TestNYXException.cpp
    TestNativeProperties.cpp
    TestNativePropertyItem.cpp
    TestRasDescriptor.cpp
    TestSynchronize.cpp
    TestTrace.cpp)
