// Prints the protocol's JSON Schema, for scripts/protocol-schema.
#include <iostream>

#include "TarnlyCore/Protocol/ProtocolSchema.hpp"

int main() {
    std::cout << tarnly::protocolSchema() << '\n';
    return std::cout.flush() ? 0 : 1;
}
