// tavel-images with attacks in the place of the conversion.

#include "Linux/Images/Program/ProcessLock.h"
#include "Tests/Images/Attacks.h"

int main(int count, char** arguments) {
    tavel::runImageProgram(count, arguments, tavel::lockProcess, tavel::attack);
}
