/// All headers of the library.
#pragma once

#include "ZkTools/Alias.h"
#include "ZkTools/BigNumber.h"
#include "ZkTools/Containers.h"
#include "ZkTools/DateTime.h"
#include "ZkTools/DecimalValue.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"
#include "ZkTools/Files.h"
#include "ZkTools/Library.h"
#include "ZkTools/Locks.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/OptionTree.h"
#include "ZkTools/Paths.h"
#include "ZkTools/PointerQueue.h"
#include "ZkTools/Stream.h"
#include "ZkTools/Strings.h"
