#include "../PlugIn.h"

void plugin::AddButtons(void* alert) {
    AddButton(alert, CFSTR("OK"));
    AddButton(alert, CFSTR("Cancel"));
}
