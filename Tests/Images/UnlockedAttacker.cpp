// The same attacks without the lock: those that it stops must succeed here, or the tests would prove nothing.

#include "Tests/Images/Attacks.h"

int main(int count, char** arguments) {
    tavel::runImageProgram(
        count, arguments, [] {}, tavel::attack);
}
