// Heap allocation counter of the benchmark executable. bench_alloc_counter.cpp replaces
// the global operator new and delete (all forms) and counts every allocation, so a
// benchmark can report the allocations its timed loop makes.
#pragma once

// Allocations made through operator new since the process started.
long long KyrAllocCount();
