#include "copy.h"

int main(int Count, char** Operands) {
    return Count == 3 && Copy(Operands[1], Operands[2]) ? 0 : 1;
}
