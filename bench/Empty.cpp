// A shared library with nothing in it: what opening one costs.

extern "C" int BenchEmpty();
int BenchEmpty() { return 0; }
