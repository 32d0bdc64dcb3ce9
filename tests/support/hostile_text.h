// Hostile text from a generator with a fixed seed: key words, grammar characters, numbers at the edges and noise, in
// any order and length.
#pragma once

#include <random>
#include <string>
#include <vector>

class HostileText {
public:
    explicit HostileText(unsigned seed) : m_random(seed) {}

    int number(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }

    /// One piece: mostly something that means something to one of the grammars.
    std::string piece() {
        static const std::vector<std::string> pieces = {"-",
                                                        "+",
                                                        "=",
                                                        "/",
                                                        ";",
                                                        "\"",
                                                        "//",
                                                        "[",
                                                        "]",
                                                        "\t",
                                                        " ",
                                                        "~~~",
                                                        "\r",
                                                        "\n",
                                                        "~",
                                                        "*",
                                                        "?",
                                                        "|",
                                                        ",",
                                                        ".",
                                                        "..",
                                                        "%s%n",
                                                        "0",
                                                        "-1",
                                                        "2147483647",
                                                        "-2147483648",
                                                        "99999999999999999999",
                                                        "1e308",
                                                        "nan",
                                                        "inf",
                                                        "0x7f",
                                                        "1;2;3",
                                                        "1; 9; +1",
                                                        "9; 1; -1",
                                                        "1; 100; *2",
                                                        "1;1;+0",
                                                        "5;1;*1",
                                                        "30000;32767;+1000",
                                                        "1;2147483647;+2147483647",
                                                        "Auto",
                                                        "Manual",
                                                        "Statistic",
                                                        "Iterative",
                                                        "byte",
                                                        "yes",
                                                        "Method",
                                                        "NumLoops",
                                                        "Accuracy",
                                                        "VectorAlign",
                                                        "Kelvar Rig",
                                                        "[Kelvar Rig]",
                                                        "[frGood]",
                                                        "Size",
                                                        "frGood",
                                                        "frMany0001",
                                                        "O",
                                                        "ONLY",
                                                        "HIGH",
                                                        "All",
                                                        "TPM",
                                                        "veksFFTFwd_RToPerm_GSMAMR_16s_I",
                                                        "_16s32s_",
                                                        "C3AC4P3",
                                                        "veks",
                                                        "\x80\xff",
                                                        "\x01"};
        switch (number(8)) {
        case 0:
            return run();
        case 1: {
            std::string noise;
            for (int i = number(20); i > 0; --i) {
                noise += static_cast<char>(1 + number(255));
            }
            return noise;
        }
        default:
            return pieces[static_cast<size_t>(number(static_cast<int>(pieces.size())))];
        }
    }

    std::string text(int most) {
        std::string all;
        for (int i = number(most + 1); i > 0; --i) {
            all += piece();
        }
        return all;
    }

    /// A key word, or something else in its place.
    std::string key() {
        static const std::string letters = "BAdiIPoOLrRqQuUgnplftFYHTNSCsevh?mxZ0\x7f";
        if (number(6) == 0) {
            return text(3);
        }
        std::string word = number(8) == 0 ? "/" : "-";
        word += letters[static_cast<size_t>(number(static_cast<int>(letters.size())))];
        return word + text(2);
    }

    /// The same key without a way out of the working directory: no slash after its first character, no "..".
    std::string tameKey() {
        std::string word = key();
        std::string tame;
        for (size_t i = 0; i < word.size(); ++i) {
            const bool slash = word[i] == '/' || word[i] == '\\';
            const bool dots = word[i] == '.' && !tame.empty() && tame.back() == '.';
            const bool drive = word[i] == ':';
            if (!((slash && i > 0) || dots || drive) && word[i] != '\0') {
                tame += word[i];
            }
        }
        return tame;
    }

private:
    // One number a statement: the order in which a compiler takes operands would change the cases.
    std::string run() {
        const int length = number(400);
        const int letter = number(90);
        return std::string(static_cast<size_t>(length), static_cast<char>('!' + letter));
    }

    std::mt19937 m_random;
};
