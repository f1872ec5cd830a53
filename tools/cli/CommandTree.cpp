#include "CommandTree.h"

#include <algorithm>
#include <functional>
#include <sstream>

namespace cli {

namespace {

// Edits (insertions, deletions, substitutions) between two words.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

std::string longOptions(const CLI::App& command) {
    std::string words;
    for (const auto* option : command.get_options()) {
        for (const auto& name : option->get_lnames()) words += " --" + name;
    }
    return words;
}

}  // namespace

std::vector<std::string> CommandTree::children(const CLI::App& command) {
    std::vector<std::string> names;
    for (const auto* sub : command.get_subcommands([](const CLI::App*) { return true; })) {
        if (!sub->get_group().empty()) names.push_back(sub->get_name());
    }
    return names;
}

const CLI::App& CommandTree::walk(const CLI::App& root, const std::vector<std::string>& words, std::size_t& used) {
    const CLI::App* node = &root;
    used = 0;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (!word.empty() && word[0] == '-') {
            // An option given its value as the next word takes that word too.
            const auto* option = node->get_option_no_throw(word);
            if (option != nullptr && option->get_expected_min() > 0 && word.find('=') == std::string::npos) ++i, ++used;
            ++used;
            continue;
        }
        const CLI::App* child = nullptr;
        for (const auto* sub : node->get_subcommands([](const CLI::App*) { return true; })) {
            if (sub->get_name() == word) child = sub;
        }
        if (child == nullptr) break;
        node = child;
        ++used;
    }
    return *node;
}

std::string CommandTree::suggest(const CLI::App& root, const std::vector<std::string>& words) {
    std::size_t used = 0;
    const CLI::App& node = walk(root, words, used);
    const auto names = children(node);
    if (used >= words.size() || names.empty()) return {};
    const std::string& word = words[used];
    const auto best = std::min_element(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
        return distance(word, a) < distance(word, b);
    });
    std::string message = "unknown sub-command '" + word + "'" +
                          (&node == &root ? std::string() : " of '" + node.get_name() + "'");
    if (distance(word, *best) <= std::max<std::size_t>(2, word.size() / 3)) message += "; did you mean '" + *best + "'?";
    return message;
}

std::string CommandTree::bashCompletion(const CLI::App& root) {
    const std::string function = "_" + root.get_name();
    std::string name = function;
    std::replace(name.begin(), name.end(), '-', '_');
    // The root's options that take a value: the word after them is no sub-command.
    std::string valued;
    for (const auto* option : root.get_options()) {
        if (option->get_expected_min() == 0) continue;
        for (const auto& long_name : option->get_lnames()) valued += (valued.empty() ? "--" : "|--") + long_name;
    }
    std::ostringstream out;
    out << "# bash completion for " << root.get_name() << ", made by '" << root.get_name() << " completion bash'\n"
        << name << "() {\n"
        << "    local cur=${COMP_WORDS[COMP_CWORD]} path= i words=\n"
        << "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        << "        case ${COMP_WORDS[i]} in\n"
        << "        " << valued << ") ((i++)) ;;\n"
        << "        -*) ;;\n"
        << "        *) path+=\" ${COMP_WORDS[i]}\" ;;\n"
        << "        esac\n"
        << "    done\n"
        << "    case \"${path# }\" in\n";
    std::function<void(const CLI::App&, const std::string&)> visit = [&](const CLI::App& node, const std::string& path) {
        std::string words = longOptions(node);
        for (const auto& child : children(node)) words += " " + child;
        out << "    \"" << path << "\") words=\"" << (words.empty() ? words : words.substr(1)) << "\" ;;\n";
        for (const auto* sub : node.get_subcommands([](const CLI::App*) { return true; })) {
            if (!sub->get_group().empty()) visit(*sub, path.empty() ? sub->get_name() : path + " " + sub->get_name());
        }
    };
    visit(root, "");
    out << "    esac\n"
        << "    COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
        << "}\n"
        << "complete -F " << name << " " << root.get_name() << "\n";
    return out.str();
}

}  // namespace cli
