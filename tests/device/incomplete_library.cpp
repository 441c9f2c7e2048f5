// Not a logger library: it knows one of the functions only.
extern "C" int QuobrixOpenPort(const char*) { return 0; }
