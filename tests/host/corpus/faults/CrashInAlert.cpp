#include "../PlugIn.h"

#include <csignal>
void plugin::ShowAlert() { std::raise(SIGABRT); }
