#pragma once

#include <cstdint>

// The vocabulary of the plug-in contract: a stand-in under the names that its SDK uses, with just what the
// strip and its host rely on. Interfaces cross the boundary of the loaded library; everything else is linked
// into each side.

using AAX_Result = std::int32_t;
using AAX_CTypeID = std::uint32_t;     ///< four characters, the first in the high byte
using AAX_CFieldIndex = std::int32_t;  ///< field of the render context
using AAX_CParamID = const char*;      ///< identifier string of a parameter
using AAX_CPropertyValue = std::int64_t;
using AAX_CBoolean = std::uint8_t;
using AAX_CTransportTempo = double;
using AAX_CComponentID = std::int32_t;

enum AAX_EError : AAX_Result {
  AAX_SUCCESS = 0,
  AAX_ERROR_INVALID_PARAMETER_ID = -20001,
  AAX_ERROR_INVALID_STRING_CONVERSION = -20002,
  AAX_ERROR_INVALID_METER_INDEX = -20003,
  AAX_ERROR_NULL_OBJECT = -20004,
  AAX_ERROR_INVALID_CHUNK_INDEX = -20006,
  AAX_ERROR_INVALID_CHUNK_ID = -20007,
  AAX_ERROR_INCORRECT_CHUNK_SIZE = -20008,
  AAX_ERROR_UNIMPLEMENTED = -20009,
  AAX_ERROR_NOT_INITIALIZED = -20011,
  AAX_ERROR_INVALID_FIELD_INDEX = -20015,
  AAX_ERROR_INVALID_INTERNAL_DATA = -20016,
};

/// Version of this contract, for `ACFGetSDKVersion`.
inline constexpr AAX_Result AAX_SDKVersion = 0x0203;

/// Four characters as a type id.
constexpr AAX_CTypeID AAX_TypeID(const char (&text)[5]) {
  AAX_CTypeID id = 0;
  for (int k = 0; k < 4; ++k) id = id << 8 | static_cast<unsigned char>(text[k]);
  return id;
}

/// Where an update of a parameter comes from.
enum AAX_EUpdateSource : std::int32_t {
  AAX_eUpdateSource_Unspecified = 0,  ///< answer to a request; whether a person moved it tells the touch
  AAX_eUpdateSource_Parameter = 1,    ///< the host's own value: automation, for instance
  AAX_eUpdateSource_Chunk = 2,
  AAX_eUpdateSource_Delay = 3,
};

enum AAX_EMIDINodeType : std::int32_t {
  AAX_eMIDINodeType_LocalInput = 0,
  AAX_eMIDINodeType_Transport = 3,
};

enum AAX_EDataInPortType : std::int32_t {
  AAX_eDataInPortType_Unbuffered = 0,
  AAX_eDataInPortType_Buffered = 1
};

enum AAX_EStemFormat : std::int32_t { AAX_eStemFormat_Mono = 1 };

enum AAX_EResourceType : std::int32_t { AAX_eResourceType_PageTable = 1 };

/// Which object a factory function of the description makes.
enum AAX_CProcPtrID : std::int32_t {
  kAAX_ProcPtrID_Create_EffectParameters = 0,
  kAAX_ProcPtrID_Create_EffectGUI = 1,
  kAAX_ProcPtrID_Create_EffectDirectData = 5,
};

/// Properties by number.
enum AAX_EProperty : std::int32_t {
  AAX_eProperty_ManufacturerID = 11,
  AAX_eProperty_ProductID = 12,
  AAX_eProperty_PlugInID_Native = 13,
  AAX_eProperty_PlugInID_AudioSuite = 14,
  AAX_eProperty_InputStemFormat = 51,
  AAX_eProperty_OutputStemFormat = 52,
  AAX_eProperty_60 = 60,
  AAX_eProperty_116 = 116,
  AAX_eProperty_Meter_Type = 200,
  AAX_eProperty_Meter_Orientation = 201,
  AAX_eProperty_Meter_Custom = 202,
};

/// Stored state with its header; `fData` goes on for `fSize` bytes.
struct AAX_SPlugInChunk {
  std::int32_t fSize;  ///< of `fData`, in bytes
  std::int32_t fVersion;
  AAX_CTypeID fManufacturerID;
  AAX_CTypeID fProductID;
  AAX_CTypeID fPlugInID;
  AAX_CTypeID fChunkID;
  char fName[32];
  char fData[1];
};

/// The native process function: an array of instance records, from `inBegin` up to `inEnd`, each a table of
/// pointers by field. On the audio thread.
using AAX_CProcessProc = void (*)(void* const* inBegin[], const void* inEnd);
