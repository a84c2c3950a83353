// Picture files through the Windows Imaging Component. WIC is a COM server:
// the run thread may not have COM started, so each use starts it for itself
// (and ends it if it was the one that started it).
#include "desktop/imagefile.h"

#include <ole2.h>
#include <wincodec.h>
#include <string.h>

#include "base/files.h"
#include "base/handles.h"

namespace {

// COM for the length of one file's reading or writing.
struct ComScope {
    bool started = false;
    ComScope() { started = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)); }
    ~ComScope() {
        if (started) CoUninitialize();
    }
};

inline COLORREF FromBgra(DWORD bgra) { return ((bgra & 0xFF) << 16) | (bgra & 0xFF00) | ((bgra >> 16) & 0xFF); }

// A file whose first bytes say "BM": read as every earlier version read
// bitmaps, so that an old script sees exactly the same pixels.
bool IsBitmapFile(const char* file) {
    AutoCloseHandle f(CreateFileA(file, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!f.ok()) return false;
    char magic[2] = {};
    DWORD got = 0;
    return ReadFile(f.h, magic, 2, &got, nullptr) && got == 2 && magic[0] == 'B' && magic[1] == 'M';
}

int ReadBitmap(const char* file, int maxWidth, int maxHeight, ImagePixels& image) {
    AutoDeleteObject bitmap(LoadImageA(nullptr, file, IMAGE_BITMAP, 0, 0, 0x2050));
    if (!bitmap.obj) return IMAGE_READ_UNDECODABLE;
    BITMAP bm = {};
    GetObjectA(bitmap.obj, sizeof bm, &bm);
    image.width = bm.bmWidth;
    image.height = bm.bmHeight < 0 ? -bm.bmHeight : bm.bmHeight;
    if (image.width <= 0 || image.height <= 0) return IMAGE_READ_UNDECODABLE;
    if (image.width > maxWidth || image.height > maxHeight) return IMAGE_READ_TOO_LARGE;
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = image.width;
    info.bmiHeader.biHeight = -image.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    std::vector<DWORD> raw((size_t)image.width * (size_t)image.height);
    ScopedGetDC dc(nullptr);
    if (!GetDIBits(dc.dc, (HBITMAP)bitmap.obj, 0, (UINT)image.height, raw.data(), &info, DIB_RGB_COLORS))
        return IMAGE_READ_UNDECODABLE;
    image.pixels.resize(raw.size());
    for (size_t i = 0; i < raw.size(); i++) image.pixels[i] = FromBgra(raw[i]);
    return IMAGE_READ_OK;
}

int ReadThroughCodecs(const char* file, int maxWidth, int maxHeight, ImagePixels& image) {
    ComScope com;
    AutoRelease<IWICImagingFactory> factory;
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                (void**)&factory.p)))
        return IMAGE_READ_UNDECODABLE;
    WCHAR wide[MAX_PATH];
    if (!MultiByteToWideChar(CP_ACP, 0, file, -1, wide, MAX_PATH)) return IMAGE_READ_UNDECODABLE;
    AutoRelease<IWICBitmapDecoder> decoder;
    if (FAILED(factory->CreateDecoderFromFilename(wide, nullptr, GENERIC_READ, WICDecodeMetadataCacheOnDemand,
                                                  &decoder.p)))
        return IMAGE_READ_UNDECODABLE;
    AutoRelease<IWICBitmapFrameDecode> frame;
    if (FAILED(decoder->GetFrame(0, &frame.p))) return IMAGE_READ_UNDECODABLE;
    UINT w = 0, h = 0;
    if (FAILED(frame->GetSize(&w, &h)) || w == 0 || h == 0) return IMAGE_READ_UNDECODABLE;
    image.width = (int)(w > 0x7FFFFFFF ? 0x7FFFFFFF : w);
    image.height = (int)(h > 0x7FFFFFFF ? 0x7FFFFFFF : h);
    if (image.width > maxWidth || image.height > maxHeight) return IMAGE_READ_TOO_LARGE;
    AutoRelease<IWICFormatConverter> converter;
    if (FAILED(factory->CreateFormatConverter(&converter.p)) ||
        FAILED(converter->Initialize(frame.p, GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone, nullptr, 0.0,
                                     WICBitmapPaletteTypeCustom)))
        return IMAGE_READ_UNDECODABLE;
    std::vector<DWORD> raw((size_t)w * h);
    if (FAILED(converter->CopyPixels(nullptr, w * 4, (UINT)(raw.size() * 4), (BYTE*)raw.data())))
        return IMAGE_READ_UNDECODABLE;
    image.pixels.resize(raw.size());
    bool anyClear = false;
    for (size_t i = 0; i < raw.size(); i++) {
        image.pixels[i] = FromBgra(raw[i]);
        if ((raw[i] >> 24) < 128) anyClear = true;
    }
    if (anyClear) {
        image.clear.resize(raw.size());
        for (size_t i = 0; i < raw.size(); i++) image.clear[i] = (raw[i] >> 24) < 128 ? 1 : 0;
    }
    return IMAGE_READ_OK;
}

}  // namespace

int ReadImageFile(const char* file, int maxWidth, int maxHeight, ImagePixels& image) {
    image = ImagePixels{};
    if (!file || !*file || GetFileAttributesA(file) == INVALID_FILE_ATTRIBUTES) return IMAGE_READ_MISSING;
    if (IsBitmapFile(file)) {
        int result = ReadBitmap(file, maxWidth, maxHeight, image);
        if (result != IMAGE_READ_UNDECODABLE) return result;
        image = ImagePixels{};  // a bitmap LoadImage refuses may still decode (a top-down or compressed one)
    }
    return ReadThroughCodecs(file, maxWidth, maxHeight, image);
}

std::string EncodePng(const DWORD* pixels, int width, int height) {
    if (!pixels || width <= 0 || height <= 0) return "";
    ComScope com;
    AutoRelease<IWICImagingFactory> factory;
    if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                (void**)&factory.p)))
        return "";
    AutoRelease<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, &stream.p))) return "";
    AutoRelease<IWICBitmapEncoder> encoder;
    if (FAILED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &encoder.p)) ||
        FAILED(encoder->Initialize(stream.p, WICBitmapEncoderNoCache)))
        return "";
    AutoRelease<IWICBitmapFrameEncode> frame;
    if (FAILED(encoder->CreateNewFrame(&frame.p, nullptr)) || FAILED(frame->Initialize(nullptr)) ||
        FAILED(frame->SetSize((UINT)width, (UINT)height)))
        return "";
    WICPixelFormatGUID format = GUID_WICPixelFormat32bppBGR;
    if (FAILED(frame->SetPixelFormat(&format))) return "";
    std::vector<DWORD> rows(pixels, pixels + (size_t)width * (size_t)height);
    WICPixelFormatGUID given = GUID_WICPixelFormat32bppBGR;
    if (memcmp(&format, &given, sizeof format) != 0) {
        // The encoder wants another layout (24-bit): pack the rows for it.
        std::vector<BYTE> packed((size_t)width * 3 * (size_t)height);
        for (size_t i = 0; i < rows.size(); i++) {
            packed[i * 3] = (BYTE)rows[i];
            packed[i * 3 + 1] = (BYTE)(rows[i] >> 8);
            packed[i * 3 + 2] = (BYTE)(rows[i] >> 16);
        }
        if (FAILED(frame->WritePixels((UINT)height, (UINT)width * 3, (UINT)packed.size(), packed.data()))) return "";
    } else if (FAILED(frame->WritePixels((UINT)height, (UINT)width * 4, (UINT)(rows.size() * 4), (BYTE*)rows.data()))) {
        return "";
    }
    if (FAILED(frame->Commit()) || FAILED(encoder->Commit())) return "";
    HGLOBAL memory = nullptr;
    if (FAILED(GetHGlobalFromStream(stream.p, &memory))) return "";
    STATSTG stat = {};
    if (FAILED(stream->Stat(&stat, STATFLAG_NONAME))) return "";
    const char* bytes = (const char*)GlobalLock(memory);
    if (!bytes) return "";
    std::string png(bytes, (size_t)stat.cbSize.QuadPart);
    GlobalUnlock(memory);
    return png;
}

bool WritePngFile(const char* file, const DWORD* pixels, int width, int height) {
    if (!file || !*file) return false;
    // Encoded into memory first, then written in one piece beside the old file.
    const std::string png = EncodePng(pixels, width, height);
    return !png.empty() && WriteFileReplacing(file, png.data(), png.size(), false);
}
