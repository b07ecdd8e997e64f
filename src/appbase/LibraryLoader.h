#pragma once

// Libraries loaded at their first use instead of at start-up. Codec libraries
// bring trees of others with them that cost memory and start-up time in
// every run, while most runs never need them.
class LibraryLoader
{
public:
    // The library `name` (a file name as for dlopen, with its major version),
    // loaded now with its symbols kept to itself; null when it can't be. A
    // library once loaded stays for the life of the process.
    static void *open(const char *name);

    // `function` set to the symbol `name` of `library`; false, and `function`
    // null, when either is missing, so that a table of functions is only used
    // when every lookup succeeded.
    template <typename Function>
    static bool resolve(void *library, const char *name, Function &function)
    {
        function = reinterpret_cast<Function>(symbol(library, name));
        return function != nullptr;
    }

private:
    static void *symbol(void *library, const char *name);
};
