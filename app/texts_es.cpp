// Spanish.
#include "app/language_texts.h"

namespace app {

LanguageTexts SpanishTexts() {
    LanguageTexts t;
    t.wizardBack = "< Atrás";
    t.wizardNext = "Siguiente >";
    t.wizardFinish = "Finalizar";
    t.wizardCancel = "Cancelar";
    t.acceptCancel = "¿Realmente desea cancelar la instalación?";
    t.titleInstaller = "Instalación de la configuración";
    t.prepareCopy = "Preparando la copia...";
    t.installError = "Error de instalación";
    t.errorNoSource = "No se encontró el archivo del paquete de distribución ord8.dkz.";
    t.errorNoTarget = "No se admite la instalación de plantillas en el directorio actual.";
    t.errorNoSpace = "No hay suficiente espacio disponible en el directorio Temp.";
    t.chooseDirFolder = "&Carpeta:";
    t.chooseDirTitle = "Elegir directorio";
    t.setupEmptyTarget = "Especifique una ruta correcta al directorio de plantillas.";
    t.installFinish = "Copia completada...";
    t.errorDamagedSource =
        "El archivo del paquete de distribución ord8.dkz está dañado o no está diseñado para "
        "este programa de instalación.";
    t.defProduct = "<Producto>";
    t.defProvider = "<Proveedor>";
    t.successFinish = "La configuración se instaló correctamente.";
    t.successOpenDescr = "Abrir la descripción del paquete";
    t.progressStart = "Copiando archivos...";
    t.errorFinish =
        "Se produjo un error durante el proceso de instalación. Instalación cancelada. El "
        "directorio de plantillas no se ha modificado.";
    t.cancelFinish = "Instalación cancelada. El directorio de plantillas no se ha modificado.";
    t.browseSelDir = "Directorio seleccionado:";
    t.browseOk = "Seleccionar";
    t.welcomeTitle = "Bienvenido al programa de instalación del producto";
    t.setupExistedTarget =
        "El directorio de instalación contiene archivos que pueden modificarse durante el "
        "proceso de instalación. ¿Desea continuar?";
    t.destinationPrompt =
        "Especifique la ruta al directorio de plantillas. El programa de instalación instalará "
        "las plantillas y los archivos de configuración en el directorio especificado.";
    t.templateCatalog = "Directorio de plantillas:";
    return t;
}

}  // namespace app
