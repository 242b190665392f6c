// The functions behind the ordinals of WinRing0x64.dll, declared for who imports and who stands in
// for them.
#pragma once

#include <cstdint>

#if !defined(VORN_RING0_IMPORT)
#define VORN_RING0_IMPORT __declspec(dllimport)
#endif

extern "C" {

VORN_RING0_IMPORT std::uint32_t ring0Status();
VORN_RING0_IMPORT std::uint32_t ring0Initialize();
VORN_RING0_IMPORT void ring0Deinitialize();
VORN_RING0_IMPORT std::uint32_t ring0ReadMsr(std::uint32_t index, std::uint32_t* low,
                                             std::uint32_t* high);
VORN_RING0_IMPORT std::uint32_t ring0WriteMsr(std::uint32_t index, std::uint32_t low,
                                              std::uint32_t high);
VORN_RING0_IMPORT std::uint8_t ring0ReadPciConfigByte(std::uint32_t address, std::uint32_t offset);
VORN_RING0_IMPORT std::uint16_t ring0ReadPciConfigWord(std::uint32_t address, std::uint32_t offset);
VORN_RING0_IMPORT std::uint32_t ring0ReadPciConfigDword(std::uint32_t address,
                                                        std::uint32_t offset);
VORN_RING0_IMPORT std::uint32_t ring0ReadPciConfigWordChecked(std::uint32_t address,
                                                              std::uint32_t offset,
                                                              std::uint16_t* value);
VORN_RING0_IMPORT std::uint32_t ring0ReadPciConfigDwordChecked(std::uint32_t address,
                                                               std::uint32_t offset,
                                                               std::uint32_t* value);
}
