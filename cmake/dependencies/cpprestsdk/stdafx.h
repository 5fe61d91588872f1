#pragma once
// In the place of the precompiled header of cpprestsdk's sources: what its three sources of web::uri use.

#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <urlmon.h>
#include <winhttp.h>

#include "cpprest/uri_builder.h"

#include <cstring>
#include <mutex>

// One source says http::uri still, as the class was once called.
namespace web::http {
using web::uri;
}
