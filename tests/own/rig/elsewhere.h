// Functions whose bodies the file that measures them does not see.
#pragma once

int elsewhere();
float energy(const float* samples, int count);
