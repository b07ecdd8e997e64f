#include "appbase/LibraryLoader.h"

#include <dlfcn.h>

void *LibraryLoader::open(const char *name)
{
    return dlopen(name, RTLD_NOW | RTLD_LOCAL);
}

void *LibraryLoader::symbol(void *library, const char *name)
{
    return library ? dlsym(library, name) : nullptr;
}
