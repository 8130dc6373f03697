// The class ids of the two variants.
#pragma once

#include <guiddef.h>
#include <windows.h>

// {D3BDE93A-50C2-439A-B238-44F1CB5055B0}: the algorithm on a worker.
inline constexpr CLSID KELVANE_RENDER_EFX_GUID = {
    0xD3BDE93A, 0x50C2, 0x439A, {0xB2, 0x38, 0x44, 0xF1, 0xCB, 0x50, 0x55, 0xB0}};
// {6CB3EF4C-BC00-4A60-BC34-734F0148F856}: the algorithm inline on the processing thread.
inline constexpr CLSID KELVANE_RENDER_OMFX_GUID = {
    0x6CB3EF4C, 0xBC00, 0x4A60, {0xBC, 0x34, 0x73, 0x4F, 0x01, 0x48, 0xF8, 0x56}};
