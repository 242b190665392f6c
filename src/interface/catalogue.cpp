#include "interface/catalogue.h"

#include <algorithm>

#include "tests/compute/cpu_load_test.h"
#include "tests/compute/floating_point_test.h"
#include "tests/compute/mp_stress_test.h"
#include "tests/compute/prime_number_test.h"
#include "tests/cpu/base_clock_test.h"
#include "tests/cpu/brand_string_test.h"
#include "tests/cpu/cache_size_test.h"
#include "tests/cpu/cpu_frequency_test.h"
#include "tests/cpu/fsb_test.h"
#include "tests/cpu/genuine_processor_test.h"
#include "tests/cpu/temperature_test.h"
#include "tests/isa/avx_aes_pclmulqdq_test.h"
#include "tests/isa/mmx_sse_test.h"
#include "tests/memory/memory_controller_test.h"
#include "tests/platform/graphics_device_test.h"
#include "tests/platform/graphics_visual_test.h"
#include "tests/platform/pch_test.h"
#include "tests/platform/qpi_test.h"
#include "tests/platform/rotation_test.h"

namespace vorn {

const std::vector<CatalogueEntry>& catalogue() {
    static const std::vector<CatalogueEntry> rows{
        // test, function, prerequisite, completion words, error line
        {AVX_AES_PCLMULQDQ, testAvxAesPclmulqdq},
        {BASE_CLOCK, testBaseClock, CPU_FREQUENCY},
        {BRAND_STRING, testBrandString},
        {CACHE, testCacheSize},
        {CPU_FREQUENCY, testCpuFrequency},
        {CPU_MANUFACTURER, testGenuineProcessor},
        {CPU_LOAD, testCpuLoad, CPU_FREQUENCY, "CPU Load Complete!",
         "Fail!  CPU Load encountered an error!"},
        {FSB, testFsb},
        {.test = GFX, .function = testGraphicsVisual, .registered = false},
        {IGD, testGraphicsDevice},
        {IMC, testMemoryController, AVX_AES_PCLMULQDQ},
        {FLOATING_POINT, testFloatingPoint},
        {PRIME_NUMBER, testPrimeNumber},
        {MMX_SSE, testMmxSse},
        {MP_STRESS, testMpStress, std::nullopt, "Multi Processor Stress Load Complete!",
         "Fail!  Multi Processor Stress Load encountered an error!"},
        {PCH, testPlatformControllerHub},
        {QPI, testQpi, CPU_FREQUENCY},
        {ROTATION, testRotation},
        {TEMPERATURE, testTemperature},
    };
    return rows;
}

const CatalogueEntry* findInCatalogue(Test test) {
    const std::vector<CatalogueEntry>& rows = catalogue();
    const auto row = std::find_if(rows.begin(), rows.end(), [test](const CatalogueEntry& entry) {
        return entry.test == test;
    });
    return row == rows.end() ? nullptr : &*row;
}

}  // namespace vorn
