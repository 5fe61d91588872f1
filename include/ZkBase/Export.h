/// Marks what ZkBase.dll exports.
#pragma once

#ifdef ZKBASE_BUILD
#define ZKBASE_API __declspec(dllexport)
#else
#define ZKBASE_API __declspec(dllimport)
#endif
