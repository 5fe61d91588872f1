/// All headers of the base library.
#pragma once

#include "ZkBase/CodePages.h"
#include "ZkBase/Exceptions.h"
#include "ZkBase/Files.h"
#include "ZkBase/Messages.h"
#include "ZkBase/ObjectType.h"
#include "ZkBase/Paths.h"
#include "ZkBase/TestMode.h"
#include "ZkBase/Text.h"
