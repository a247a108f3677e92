// The version of the plug-in, which is counted apart from that of the conversion library.
#pragma once

inline constexpr char pluginVersion[] = "2.3.1";
