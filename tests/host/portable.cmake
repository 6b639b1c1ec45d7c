# The sources of unit/ that need no Windows and test no class of the platform.
set(PORTABLE_TESTS
    TestConsoleLogHandler.cpp
    TestEventLog.cpp
    TestFFDC.cpp
    TestIPCMessage.cpp
    TestLogLevel.cpp
    TestLogRecord.cpp
    TestLogger.cpp
    TestNLS.cpp
    TestNYXException.cpp
    TestNativeProperties.cpp
    TestNativePropertyItem.cpp
    TestRAS.cpp
    TestRasDescriptor.cpp
    TestResourceBundle.cpp
    TestSynchronize.cpp
    TestTrace.cpp)
