#include <cstdio>
int main() { std::puts("quarrin-cli"); return 0; }
