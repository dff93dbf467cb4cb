// The former place of MakeMovie.
#pragma once

#include "tests/support/film.h"
