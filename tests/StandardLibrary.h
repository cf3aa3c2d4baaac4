#pragma once
// What the tests use of the standard library and of the test framework.

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <list>
#include <map>
#include <numeric>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>
