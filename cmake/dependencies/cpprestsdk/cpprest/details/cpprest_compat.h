#pragma once
// What the headers of web::uri expect of their compiler, for GCC and Clang on Windows.

#include <crtdbg.h>
#include <sal.h>

#define CPPREST_NOEXCEPT noexcept
#define CPPREST_CONSTEXPR constexpr
#define _ASYNCRTIMP
#define CASABLANCA_DEPRECATED(x)

// The system's is a typedef, which may stand in a class once only.
#undef C_ASSERT
#define C_ASSERT(e) static_assert(e)
