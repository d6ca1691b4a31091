// Was built for an interface of another number, so its entry must not be called.
#include <cstdlib>

extern "C" {
extern const int zxalign_plugin_interface;
const int zxalign_plugin_interface = 9999;

void addOther(void*) { std::abort(); }
}
