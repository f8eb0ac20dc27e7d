extern "C" void function_of_no_library();
void CallIt();
void CallIt() { function_of_no_library(); }
