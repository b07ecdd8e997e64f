#pragma once

#include <tesseract/capi.h>

// libtesseract through its C interface, loaded when text is first read, not
// when the program starts: with Leptonica, libarchive, libcurl and their own
// it is a long tree of libraries that a tray copy which never reads text
// needn't carry.
struct TesseractLibrary {
    decltype(&TessVersion) version;
    decltype(&TessDeleteText) deleteText;
    decltype(&TessBaseAPICreate) create;
    decltype(&TessBaseAPIDelete) destroy;
    decltype(&TessBaseAPIInit2) init;
    decltype(&TessBaseAPIEnd) end;
    decltype(&TessBaseAPISetVariable) setVariable;
    decltype(&TessBaseAPISetPageSegMode) setPageSegMode;
    decltype(&TessBaseAPISetImage) setImage;
    decltype(&TessBaseAPISetSourceResolution) setSourceResolution;
    decltype(&TessBaseAPIRecognize) recognize;
    decltype(&TessBaseAPIClear) clear;
    decltype(&TessBaseAPIGetIterator) iterator;
    decltype(&TessResultIteratorDelete) iteratorDelete;
    decltype(&TessResultIteratorNext) iteratorNext;
    decltype(&TessResultIteratorGetUTF8Text) iteratorText;
    decltype(&TessResultIteratorGetPageIteratorConst) pageIterator;
    decltype(&TessPageIteratorBoundingBox) boundingBox;

    // Loaded at the first call, from any thread; null when the library or one
    // of its functions can't be found.
    static const TesseractLibrary *loaded();
};
