#include <tessel/FFDC.h>

namespace tessel {

std::string FFDC::PROBE_001() { return "FFDC_001"; }
std::string FFDC::PROBE_002() { return "FFDC_002"; }
std::string FFDC::PROBE_003() { return "FFDC_003"; }
std::string FFDC::PROBE_004() { return "FFDC_004"; }
std::string FFDC::PROBE_005() { return "FFDC_005"; }
std::string FFDC::PROBE_006() { return "FFDC_006"; }
std::string FFDC::PROBE_007() { return "FFDC_007"; }
std::string FFDC::PROBE_008() { return "FFDC_008"; }
std::string FFDC::PROBE_009() { return "FFDC_009"; }
std::string FFDC::PROBE_010() { return "FFDC_010"; }
std::string FFDC::PROBE_011() { return "FFDC_011"; }
std::string FFDC::PROBE_012() { return "FFDC_012"; }
std::string FFDC::PROBE_013() { return "FFDC_013"; }
std::string FFDC::PROBE_014() { return "FFDC_014"; }
std::string FFDC::PROBE_015() { return "FFDC_015"; }
std::string FFDC::PROBE_016() { return "FFDC_016"; }
std::string FFDC::PROBE_017() { return "FFDC_017"; }
std::string FFDC::PROBE_018() { return "FFDC_018"; }
std::string FFDC::PROBE_019() { return "FFDC_019"; }
std::string FFDC::PROBE_020() { return "FFDC_020"; }
std::string FFDC::PROBE_021() { return "FFDC_021"; }
std::string FFDC::PROBE_022() { return "FFDC_022"; }
std::string FFDC::PROBE_023() { return "FFDC_023"; }
std::string FFDC::PROBE_024() { return "FFDC_024"; }
std::string FFDC::PROBE_025() { return "FFDC_025"; }
std::string FFDC::PROBE_026() { return "FFDC_026"; }
std::string FFDC::PROBE_027() { return "FFDC_027"; }
std::string FFDC::PROBE_028() { return "FFDC_028"; }
std::string FFDC::PROBE_029() { return "FFDC_029"; }
std::string FFDC::PROBE_030() { return "FFDC_030"; }
std::string FFDC::PROBE_031() { return "FFDC_031"; }
std::string FFDC::PROBE_032() { return "FFDC_032"; }
std::string FFDC::PROBE_033() { return "FFDC_033"; }
std::string FFDC::PROBE_034() { return "FFDC_034"; }
std::string FFDC::PROBE_035() { return "FFDC_035"; }
std::string FFDC::PROBE_036() { return "FFDC_036"; }
std::string FFDC::PROBE_037() { return "FFDC_037"; }
std::string FFDC::PROBE_038() { return "FFDC_038"; }
std::string FFDC::PROBE_039() { return "FFDC_039"; }
std::string FFDC::PROBE_040() { return "FFDC_040"; }
std::string FFDC::PROBE_041() { return "FFDC_041"; }
std::string FFDC::PROBE_042() { return "FFDC_042"; }
std::string FFDC::PROBE_043() { return "FFDC_043"; }
std::string FFDC::PROBE_044() { return "FFDC_044"; }
std::string FFDC::PROBE_045() { return "FFDC_045"; }
std::string FFDC::PROBE_046() { return "FFDC_046"; }
std::string FFDC::PROBE_047() { return "FFDC_047"; }
std::string FFDC::PROBE_048() { return "FFDC_048"; }
std::string FFDC::PROBE_049() { return "FFDC_049"; }

}  // namespace tessel
