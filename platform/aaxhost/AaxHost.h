#pragma once

// A host of the plug-in contract: loads a library, makes instances, drives them.

#include "platform/aaxhost/Chunk.h"
#include "platform/aaxhost/Instance.h"
#include "platform/aaxhost/Library.h"
#include "platform/aaxhost/Runners.h"
