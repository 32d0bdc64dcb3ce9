// The chief header of the library-aware layer: what a suite needs to measure a library function.
#pragma once

#include "kr.h"
#include "krbase.h"
#include "kriterator.h"
#include "krstream.h"
#include "vkdefault.h"
#include "vkenum.h"
#include "vkfunc.h"
#include "vkreg.h"
#include "vkrmatr.h"
#include "vktest.h"
#include "vkvector.h"
