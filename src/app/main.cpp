#include "app/TodayProgram.h"

int main(int argc, char** argv) {
    return quillet::runToday(argc, argv);
}
