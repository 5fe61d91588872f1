/// Marks what ZkTools.dll exports.
#pragma once

#ifdef ZKTOOLS_BUILD
#define ZKTOOLS_API __declspec(dllexport)
#else
#define ZKTOOLS_API __declspec(dllimport)
#endif
