// With a process of another session beside it, which must not outlive the host either.
#include "../PlugIn.h"

#include <unistd.h>

void plugin::DressIcon() {
    if (fork() == 0) setsid();
    while (true) pause();
}
