/// The library's life-cycle pair. Neither call is needed: all that the library needs is done when it is loaded.
#pragma once

#include "ZkTools/Export.h"

namespace zk_spell_check {
class TSpellCheckFactory; // belongs to the layers above; never completed here
}

/// Does nothing that a caller can see. The factory is neither kept nor used.
ZKTOOLS_API void ZkToolsInit(zk_spell_check::TSpellCheckFactory & tFactory);

/// Does nothing.
ZKTOOLS_API void ZkToolsDone(void);
