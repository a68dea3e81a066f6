#include "loc/loc_plat.h"

#include "loc/BuiltInString.h"

// Constant-initialised: other files' initialisers may come first.
static constinit int timesMade = 0;
static const AddLocStrings_plat platStrings;

// By language, and by id within each. The texts stand as they were translated: what they say beyond
// the English ones, or in another grammar, is not for programmers to correct. No-break spaces stand
// within French quotes, plain ones before French colons.
static constexpr loc::BuiltInString table[] = {
    {"de", "plat_bad_argument", "Falsches Argument '%S'."},
    {"de", "plat_configuration_global_params", "Globale Parameter"},
    {"de", "plat_configuration_help_default", "Standardeinstellung"},
    {"de", "plat_configuration_log_dests_title", "Protokollziele:"},
    {"de", "plat_configuration_log_names_title", "Protokollnamen:"},
    {"de", "plat_configuration_option_usage", "Optionen können auch Parameter sein."},
    {"de", "plat_configuration_option_usage_only", "Optionen sind Parameter."},
    {"de", "plat_configuration_option_usage_with_extra",
     "Optionen sind Parameter und zusätzlich Folgendes:"},
    {"de", "plat_configuration_param_usage",
     "Parameter können mit „-<param>“ aktiviert oder mit „-<param>=0“ deaktiviert werden.\n"
     "Werte könne mit „-<param> <value>“ angegeben werden.\n"
     "Weitere gültige Formen sind „<param>=<value>“, „-<param>=<value>“ und "
     "„--<param>=<value>“.\n"
     "Bei Namen wird die Groß-/Kleinschreibung beachtet.  Gültige Parameter sind unten "
     "aufgeführt."},
    {"de", "plat_missing_argument", "Fehlendes Argument zu '%S'."},
    {"de", "plat_param_log", "Ereignisse im Format „<log>:<target>:<level>[,...]“ aufzeichnen."},
    {"de", "plat_param_logdir",
     "Verzeichnis, in dem in eine Datei umgeleitete Protokollausgaben gespeichert werden."},
    {"de", "plat_param_logfile",
     "Datei, in der in eine Datei umgeleitete Protokollausgaben gespeichert werden."},
    {"de", "plat_press_return_to_continue", "Drücken Sie die Eingabetaste, um fortzufahren"},
    {"de", "plat_run_with_help",
     "Rufen Sie das Programm mit „-help“ auf, um Hinweise zur Nutzung zu erhalten."},
    {"de", "plat_this_program_not_directly",
     "Dieses Programm ist nicht dafür vorgesehen, direkt ausgeführt zu werden."},
    {"de", "plat_usage_help", "[Erweiterte] Hinweise zur Nutzung anzeigen."},
    {"de", "plat_usage_label", "Nutzung:"},

    {"es", "plat_bad_argument", "El argumento '%S' no es correcto."},
    {"es", "plat_configuration_global_params", "Parámetros globales"},
    {"es", "plat_configuration_help_default", "valor predeterminado"},
    {"es", "plat_configuration_log_dests_title", "Destinos de registro:"},
    {"es", "plat_configuration_log_names_title", "Nombres de registro:"},
    {"es", "plat_configuration_option_usage", "Las opciones también pueden ser parámetros."},
    {"es", "plat_configuration_option_usage_only", "Las opciones son parámetros."},
    {"es", "plat_configuration_option_usage_with_extra",
     "Las opciones son los parámetros y, además, lo siguiente:"},
    {"es", "plat_configuration_param_usage",
     "Los parámetros se pueden activar con «-<param>» o desactivar con «-<param>=0».\n"
     "Los valores se pueden especificar con «-<param> <value>».\n"
     "Otras formas válidas son «<param>=<value>», «-<param>=<value>» y «--<param>=<value>».\n"
     "Los nombres no distinguen entre mayúsculas y minúsculas.  A continuación se enumeran los "
     "parámetros válidos."},
    {"es", "plat_missing_argument", "Falta el argumento '%S'."},
    {"es", "plat_param_log",
     "Registrar los eventos con el formato «<log>:<target>:<level>[,...]»."},
    {"es", "plat_param_logdir",
     "Directorio en el que se almacenan los datos de registro dirigidos a un archivo."},
    {"es", "plat_param_logfile",
     "Archivo en el que se almacenan los datos de registro dirigidos a un archivo."},
    {"es", "plat_press_return_to_continue", "Pulse la tecla Intro para continuar"},
    {"es", "plat_run_with_help",
     "Ejecute el programa con «-help» para obtener información sobre su uso."},
    {"es", "plat_this_program_not_directly",
     "Este programa no está pensado para ejecutarse directamente."},
    {"es", "plat_usage_help", "Mostrar información de uso [avanzada]."},
    {"es", "plat_usage_label", "Uso:"},

    {"fr", "plat_bad_argument", "Argument incorrect : '%S'."},
    {"fr", "plat_configuration_global_params", "Paramètres globaux"},
    {"fr", "plat_configuration_help_default", "valeur par défaut"},
    {"fr", "plat_configuration_log_dests_title", "Destinations de journal :"},
    {"fr", "plat_configuration_log_names_title", "Noms de journal :"},
    {"fr", "plat_configuration_option_usage", "Les options peuvent également être des paramètres."},
    {"fr", "plat_configuration_option_usage_only", "Les options sont des paramètres."},
    {"fr", "plat_configuration_option_usage_with_extra",
     "Les options sont les paramètres, ainsi que les éléments suivants :"},
    {"fr", "plat_configuration_param_usage",
     "Les paramètres peuvent être activés avec «\u00A0-<param>\u00A0» ou désactivés avec "
     "«\u00A0-<param>=0\u00A0».\n"
     "Les valeurs peuvent être indiquées avec «\u00A0-<param> <value>\u00A0».\n"
     "Les autres formes valides sont «\u00A0<param>=<value>\u00A0», "
     "«\u00A0-<param>=<value>\u00A0» et «\u00A0--<param>=<value>\u00A0».\n"
     "Les noms ne sont pas sensibles à la casse.  Les paramètres valides sont répertoriés "
     "ci-dessous."},
    {"fr", "plat_missing_argument", "Argument manquant : '%S'."},
    {"fr", "plat_param_log",
     "Enregistrer les événements au format «\u00A0<log>:<target>:<level>[,...]\u00A0»."},
    {"fr", "plat_param_logdir",
     "Répertoire dans lequel enregistrer les données de journal dirigées vers un fichier."},
    {"fr", "plat_param_logfile",
     "Fichier dans lequel enregistrer les données de journal dirigées vers un fichier."},
    {"fr", "plat_press_return_to_continue", "Appuyez sur la touche Entrée pour continuer"},
    {"fr", "plat_run_with_help",
     "Exécutez le programme avec «\u00A0-help\u00A0» pour en afficher la syntaxe."},
    {"fr", "plat_this_program_not_directly",
     "Ce programme n’est pas destiné à être exécuté directement."},
    {"fr", "plat_usage_help", "Afficher des informations d’utilisation [avancées]."},
    {"fr", "plat_usage_label", "Syntaxe :"},

    {"en", "plat_bad_argument", "Bad argument '%S'."},
    {"en", "plat_configuration_global_params", "Global parameters"},
    {"en", "plat_configuration_help_default", "default"},
    {"en", "plat_configuration_log_dests_title", "Log destinations:"},
    {"en", "plat_configuration_log_names_title", "Log names:"},
    {"en", "plat_configuration_option_usage", "Options may also be parameters."},
    {"en", "plat_configuration_option_usage_only", "Options are parameters."},
    {"en", "plat_configuration_option_usage_with_extra",
     "Options are parameters, and also the following:"},
    {"en", "plat_configuration_param_usage",
     "Parameters can be turned on with -<param> or off with -<param>=0\n"
     "Values can be specified as -<param> <value>\n"
     "Other valid forms are <param>=<value> -<param>=<value> --<param>=<value>\n"
     "Names are case-insensitive.  Valid parameters are listed below."},
    {"en", "plat_missing_argument", "Missing argument to '%S'."},
    {"en", "plat_param_log", "Record events in the format <log>:<target>:<level>[,...]."},
    {"en", "plat_param_logdir", "Directory in which to store log output directed to file."},
    {"en", "plat_param_logfile", "File in which to store log output directed to file."},
    {"en", "plat_press_return_to_continue", "Press Enter/Return key to continue"},
    {"en", "plat_run_with_help", "Run with -help for usage."},
    {"en", "plat_this_program_not_directly", "This program is not intended to be run directly."},
    {"en", "plat_usage_help", "Provide [advanced] usage information."},
    {"en", "plat_usage_label", "Usage:"},
};

AddLocStrings_plat::AddLocStrings_plat() {
    if (timesMade++ == 0)
        loc::addBuiltInStrings(table);
}
