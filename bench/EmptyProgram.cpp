#include <iostream>

int main() {
    std::cout.flush();
}
