// Does not say which interface it was built for, so its entry must not be called.
#include <cstdlib>

extern "C" void addUnnumbered(void*) { std::abort(); }
