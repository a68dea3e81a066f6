// A small library to look functions up in; built under several names, each with a number of its
// own.

#define EXPORT extern "C" __attribute__((visibility("default")))

EXPORT int lumoTestNumber() {
    return LUMO_TEST_NUMBER;
}

EXPORT int LUMO_TEST_OWN_NAME() {
    return LUMO_TEST_NUMBER;
}

EXPORT int lumoTestTwice(int value) {
    return 2 * value;
}
