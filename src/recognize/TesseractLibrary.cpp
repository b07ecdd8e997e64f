#include "recognize/TesseractLibrary.h"

#include "appbase/LibraryLoader.h"


#if TESSERACT_MAJOR_VERSION != 5
#error "libtesseract's library name below is that of its version 5"
#endif

const TesseractLibrary *TesseractLibrary::loaded()
{
    static const TesseractLibrary *const library = []() -> const TesseractLibrary * {
        static TesseractLibrary table{};
        void *tesseract = LibraryLoader::open("libtesseract.so.5");
        using L = LibraryLoader;
        const bool complete =
            L::resolve(tesseract, "TessVersion", table.version) &&
            L::resolve(tesseract, "TessDeleteText", table.deleteText) &&
            L::resolve(tesseract, "TessBaseAPICreate", table.create) &&
            L::resolve(tesseract, "TessBaseAPIDelete", table.destroy) &&
            L::resolve(tesseract, "TessBaseAPIInit2", table.init) &&
            L::resolve(tesseract, "TessBaseAPIEnd", table.end) &&
            L::resolve(tesseract, "TessBaseAPISetVariable", table.setVariable) &&
            L::resolve(tesseract, "TessBaseAPISetPageSegMode", table.setPageSegMode) &&
            L::resolve(tesseract, "TessBaseAPISetImage", table.setImage) &&
            L::resolve(tesseract, "TessBaseAPISetSourceResolution", table.setSourceResolution) &&
            L::resolve(tesseract, "TessBaseAPIRecognize", table.recognize) &&
            L::resolve(tesseract, "TessBaseAPIClear", table.clear) &&
            L::resolve(tesseract, "TessBaseAPIGetIterator", table.iterator) &&
            L::resolve(tesseract, "TessResultIteratorDelete", table.iteratorDelete) &&
            L::resolve(tesseract, "TessResultIteratorNext", table.iteratorNext) &&
            L::resolve(tesseract, "TessResultIteratorGetUTF8Text", table.iteratorText) &&
            L::resolve(tesseract, "TessResultIteratorGetPageIteratorConst", table.pageIterator) &&
            L::resolve(tesseract, "TessPageIteratorBoundingBox", table.boundingBox);
        return complete ? &table : nullptr;
    }();
    return library;
}
