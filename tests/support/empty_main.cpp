// A program that only links: see tests/CMakeLists.txt.
int main() {}
