/// @file
/// Marks what the library exports.
#pragma once

#if defined(_WIN32)
#if defined(TESSEL_BUILD)
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
#else
#define TESSEL_API
#endif
