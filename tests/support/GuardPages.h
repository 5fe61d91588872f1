/// Finds overruns: puts every block of operator new against a page that cannot be touched.
#pragma once

namespace zk_test {

/// From here on, until the process ends, each block that `operator new` gives to any module of this process
///  - ends at the last 16-byte boundary in front of an inaccessible page, so that what reads or writes beyond it stops
///    the program at once;
///  - has known bytes in front of it and in the up to 15 bytes behind it, which are looked at when it is deleted: a
///    block that was written around ends the program with a line that says so;
///  - is inaccessible for good once it was deleted, so that a late use, or deleting it twice, stops the program.
///
/// Works by writing jumps over the run-time DLL's own `operator new` and `operator delete`, so that the library under
/// test need not be built anew. A guarded block costs some 20 microseconds: of what one test allocates, the first
/// 50,000 blocks are guarded, and every 64th behind them. With a compiler that links these functions into each module
/// it does nothing and gives false; the platform's own page heap serves there. Blocks of `malloc` and over-aligned ones
/// are left alone.
bool fInstallGuardPages();

/// Begins the count of blocks anew, for the next test.
void BeginGuardedTest() noexcept;

/// True when the block came from the guarded `operator new`.
[[nodiscard]] bool fIsGuarded(void const * pBlock) noexcept;

} // namespace zk_test
