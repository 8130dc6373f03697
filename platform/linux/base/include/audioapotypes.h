// Types of the audio processing objects' real-time side.
#pragma once

#include <windef.h>
#include <winnt.h>

typedef LONGLONG HNSTIME; // 100 ns
typedef float FLOAT32;

typedef enum APO_BUFFER_FLAGS
{
    BUFFER_INVALID = 0,
    BUFFER_VALID = 1,
    BUFFER_SILENT = 2
} APO_BUFFER_FLAGS;

// One connection in one processing call.
typedef struct APO_CONNECTION_PROPERTY
{
    UINT_PTR pBuffer;          // interleaved FLOAT32 samples
    UINT32 u32ValidFrameCount; // sample frames per channel
    APO_BUFFER_FLAGS u32BufferFlags;
    UINT32 u32Signature;
} APO_CONNECTION_PROPERTY;
