#pragma once
// The sub-commands of quarrin-cli. Each takes the arguments behind its own
// name and gives the exit status.
#include <string>
#include <vector>

int CliPak(const std::vector<std::string>& args);
int CliMesh(const std::vector<std::string>& args);
int CliPicture(const std::vector<std::string>& args);
// pak unpak: the batch run of the Unpak dialog.
int CliPakUnpak(const std::vector<std::string>& args);
// wave info and wave play: the wave player.
int CliWave(const std::vector<std::string>& args);
// layout: the panes for a window size, and the bars for a picture size.
int CliLayout(const std::vector<std::string>& args);
