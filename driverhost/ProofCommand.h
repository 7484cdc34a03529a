#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CommandTree;

struct ProofOptions {
    std::string Folder;
    std::string Output;
    std::string Job;   ///< name of the job's record; empty when the folder holds one job
    int32_t Page = 1;  ///< from 1
    double Scale = 0;  ///< picture rows per printed line; 0: fit into LongSide
    int64_t LongSide = 1600;
    std::string Paper;              ///< RRGGBB; empty: white, or grey under white ink
    std::vector<std::string> Inks;  ///< the inks that are drawn; empty: all
    bool Force = false;             ///< replace a file that is no picture
};

/// Writes a picture of a printed page, put together from its channel files. Throws HostError.
void MakeProof(const ProofOptions& options);

void AddProofCommand(CommandTree& tree);
