// A shared library without a VST entry point, so that the loader's refusal can be tested.
extern "C" int vrnhostNotAPlugin() { return 0; }
