#include "benchmarks/trivialclasses.h"

/// Kept, so that the classes register when the module is loaded.
extern const auto c_TrivialClasses = Benchmarks::GetRecords(std::make_index_sequence<Benchmarks::c_ClassCount>());
