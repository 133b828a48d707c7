// The only two functions that a host finds in the plug-in.
#include "host/translate/translator.h"
#include "svm/translator/translator.h"

extern "C" {

// A new translator, independent of every other one.
// [any thread] Owns: the caller. Lives: until deleted. Fails: std::bad_alloc.
__attribute__((visibility("default"))) MCZandor_850::BaseTranslator* GiveMyTranslator() {
  return new MCZandor_850::SVMTranslator;
}

// For hosts that announce themselves on loading. Always 1: ready.
// [any thread] Fails: never.
__attribute__((visibility("default"))) int DllMain() {
  return 1;
}

}  // extern "C"
