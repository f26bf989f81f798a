// The results of the geometry functions, which are the same whether GEOS is installed or not.
#ifndef NOMUTIL_TESTS_GOLDEN_GEOMETRY_H
#define NOMUTIL_TESTS_GOLDEN_GEOMETRY_H

#include "golden/numbers.h"

void geometry(Numbers& numbers, Results& results);

#endif  // NOMUTIL_TESTS_GOLDEN_GEOMETRY_H
