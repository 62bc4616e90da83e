// A library of the right name without the function that makes a factory.
extern "C" __attribute__((visibility("default"))) void DestroyTraceFactory(void* /*factory*/) {}
